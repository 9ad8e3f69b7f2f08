// 'OS/2': compared in the layout its byte size selects (86 bytes version 1, 96
// bytes version 2, any other size the older "filler" layout), or dumped whole for
// both fonts when the sizes differ. With --opentype velldump lists it too.
#pragma once

#include "comparators/TTableComparator.h"

// Every field the comparison's layouts know of, in the longest layout the table
// holds: the version 2 fields for tables of versions 2 to 5.
class TOS2TableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TOS2TableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 22; }

    void DumpOneTable(const VellHandle& table);
    void CompareOlderLayout();
    void CompareVersion1();
    void CompareVersion2();
    void ReportResizedTable();
};
