// 'feat': the feature name table. Features are listed with their settings and
// the names the font's 'name' table gives them; two tables are compared feature
// by feature, matched by feature type alone.
#pragma once

#include "comparators/TTableComparator.h"

class TFEATTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 23; }
};

class TFEATTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 7; }
};
