// Fuzz target: every table of every font of the fuzzed file printed through its
// dumper, as velldump prints a font.
#include "FuzzFonts.h"
#include "VellDumpFonts.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    VellFontListRef fuzzed = ListFonts(std::vector<uint8_t>(data, data + size));
    if (!fuzzed) return 0;
    PrepareRun();
    ChooseOpenType(data, size);
    for (const VellFontListEntry& entry : fuzzed->entries) DumpFont(entry.font, {});
    return 0;
}
