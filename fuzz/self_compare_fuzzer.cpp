// Fuzz target: the fuzzed font compared with copies of itself in which one table
// at a time has one byte changed, so that the comparator of every table the font
// has runs on the fuzzed bytes.
#include "FuzzFonts.h"
#include "VellCmpFonts.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<uint8_t> bytes(data, data + size);
    VellFontListRef original = ListFonts(bytes);
    if (!original) return 0;
    PrepareRun();
    ChooseOpenType(data, size);
    VellFontRef font = original->entries[0].font;
    if (!NamesReadable(font)) return 0;
    // Table offsets count from the font's data: only a bare sfnt, whose data is
    // the fuzzed bytes themselves, can be changed table by table here.
    VellView file = original->file->view();
    if (file.data() != font->data.data() || !(file == VellView(data, size))) return 0;
    for (const VellTableEntry& entry : font->tables) {
        if (entry.length == 0 || !font->data.has(entry.offset, entry.length)) continue;
        size_t at = size_t{entry.offset} + entry.length - 1;
        bytes[at] ^= 0x01;
        VellFontListRef modified = ListFonts(bytes);
        bytes[at] ^= 0x01;
        if (!modified || !NamesReadable(modified->entries[0].font)) continue;
        ErrorRecord record;
        DiffFonts(modified->entries[0].font, font, &record);
    }
    return 0;
}
