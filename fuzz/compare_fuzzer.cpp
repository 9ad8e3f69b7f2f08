// Fuzz target: each font of the fuzzed file compared, both ways, with a real font.
#include <fstream>
#include <iterator>

#include "FuzzFonts.h"
#include "VellCmpFonts.h"
#include "dumpers/TJsonReport.h"

namespace {

const VellFontList& RealFont() {
    static VellFontListRef list = [] {
        std::ifstream file(VELLCMP_SOURCE_DIR "/tests/fonts/DejaVuSans-subset.ttf", std::ios::binary);
        return ListFonts(std::vector<uint8_t>(std::istreambuf_iterator<char>(file), {}));
    }();
    return *list;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    VellFontListRef fuzzed = ListFonts(std::vector<uint8_t>(data, data + size));
    if (!fuzzed) return 0;
    PrepareRun();
    ChooseOpenType(data, size);
    VellFontRef real = RealFont().entries[0].font;
    // The records of --json for about half the inputs, by the second-lowest bit of
    // the last byte.
    TJsonReport json(NullReport());
    gJsonReport = size > 0 && (data[size - 1] & 2) ? &json : nullptr;
    for (const VellFontListEntry& entry : fuzzed->entries) {
        if (!NamesReadable(entry.font)) continue;
        ErrorRecord record;
        DiffFonts(entry.font, real, &record);
        ClearUSN(&record);
        DiffFonts(real, entry.font, &record);
    }
    gJsonReport = nullptr;
    return 0;
}
