// 'cmap': added, deleted and changed encodings, and within each changed encoding
// the added, deleted and changed character mappings. Encodings are listed and
// matched through the framework, and each one's mapping comes from it as an array
// sorted by character code. With --opentype velldump lists every encoding and its
// mappings.
#pragma once

#include "comparators/TTableComparator.h"

class TCMAPTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TCMAPTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 9; }
};
