// 'cvt ': the control values of one font. There is no 'cvt ' comparator.
#pragma once

#include "dumpers/TTableDumper.h"

class TCVTTableDumper : public TTableDumper {
public:
    // (table, out)
    TCVTTableDumper(VellHandle table, FILE* out) : TTableDumper(std::move(table), out, nullptr) {}
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 10; }
};
