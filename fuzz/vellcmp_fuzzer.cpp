// Fuzz target: two font files from one input (a 16-bit length, the modified
// file's bytes, then the original file's), compared as the tool compares them,
// and every table of the modified font printed through its dumper.
#include <algorithm>
#include <cstdio>
#include <vector>

#include "VellCmpFonts.h"
#include "comparators/TTableComparator.h"
#include "dumpers/MakeTableDumper.h"
#include "framework/VellTables.h"

namespace {

FILE* NullReport() {
    static FILE* null = std::fopen("/dev/null", "w");
    return null;
}

VellFontListRef List(const uint8_t* data, size_t size) {
    ErrorRecord record;
    return VellMakeFontListFromBytes(VellMappedFile::FromBytes(std::vector<uint8_t>(data, data + size)), &record);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    size_t split = 2 + std::min<size_t>(size - 2, static_cast<size_t>(data[0] << 8 | data[1]));
    VellFontListRef modified = List(data + 2, split - 2), original = List(data + split, size - split);
    if (!modified) return 0;
    gReportFile = NullReport();
    gShowPostScriptNames = 1;
    ErrorRecord record;
    if (original) {
        DiffFonts(modified->entries[0].font, original->entries[0].font, &record);
    }
    VellFontRef font = modified->entries[0].font;
    for (const VellTableEntry& entry : font->tables) {
        // As velldump does: a table the framework cannot read is reported, not dumped.
        ErrorRecord tableRecord;
        if (!CanMakeTableDumper(font, entry.tag, &tableRecord)) continue;
        auto dumper = MakeTableDumper(font, entry.tag, NullReport());
        if (dumper) dumper->DumpTable();
    }
    return 0;
}
