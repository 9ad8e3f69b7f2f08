// 'cvt ': the control values of one font. There is no 'cvt ' comparator.
#pragma once

#include "dumpers/TTableDumper.h"

class TCVTTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 10; }
};
