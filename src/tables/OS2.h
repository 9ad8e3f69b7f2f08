// 'OS/2': compared in the layout its byte size selects (86 bytes version 1, 96
// bytes version 2, any other size the older "filler" layout), or dumped whole for
// both fonts when the sizes differ. There is no separate 'OS/2' dumper.
#pragma once

#include "comparators/TTableComparator.h"

class TOS2TableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 22; }

    void DumpOneTable(const VellHandle& table);
    void CompareOlderLayout();
    void CompareVersion1();
    void CompareVersion2();
};
