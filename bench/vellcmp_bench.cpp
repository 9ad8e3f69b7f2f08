// Where the time of a comparison goes on large fonts: the byte comparison of
// unchanged tables, the hex difference of a table without a handler, and the
// per-glyph handlers at 65535 glyphs.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "LargeFonts.h"
#include "VellCmpFonts.h"
#include "comparators/TTableComparator.h"
#include "framework/VellFontFile.h"

namespace {

struct LoadedPair {
    LoadedPair(const FontTables& modifiedTables, const FontTables& originalTables) {
        ErrorRecord record;
        modified = VellMakeFontListFromBytes(VellMappedFile::FromBytes(BuildSfnt(modifiedTables)), &record);
        original = VellMakeFontListFromBytes(VellMappedFile::FromBytes(BuildSfnt(originalTables)), &record);
    }
    VellFontRef Modified() const { return modified->entries[0].font; }
    VellFontRef Original() const { return original->entries[0].font; }
    VellFontListRef modified, original;
};

const LoadedPair& ChangedPair() {
    static LoadedPair pair(LargeFontModified(), LargeFont());
    return pair;
}

const LoadedPair& IdenticalPair() {
    static LoadedPair pair(LargeFont(), LargeFont());
    return pair;
}

FILE* NullReport() {
    static FILE* null = std::fopen("/dev/null", "w");
    return null;
}

void RunComparator(benchmark::State& state, const char* tag) {
    const LoadedPair& pair = ChangedPair();
    for (auto _ : state) {
        TFontContext modified(pair.Modified()), original(pair.Original());
        auto comparator = MakeTableComparator(modified, original, VellMakeTag(
            {tag[0], tag[1], tag[2], tag[3], '\0'}), NullReport());
        benchmark::DoNotOptimize(comparator->DumpTable());
    }
}

void BM_DiffIdenticalLargeFonts(benchmark::State& state) {
    const LoadedPair& pair = IdenticalPair();
    gReportFile = NullReport();
    for (auto _ : state) {
        ErrorRecord record;
        DiffFonts(pair.Modified(), pair.Original(), &record);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (20 << 20));
}
BENCHMARK(BM_DiffIdenticalLargeFonts)->Unit(benchmark::kMillisecond);

void BM_HexDifferenceOf20MB(benchmark::State& state) {
    RunComparator(state, "CFF ");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * (20 << 20));
}
BENCHMARK(BM_HexDifferenceOf20MB)->Unit(benchmark::kMillisecond);

void BM_HmtxEveryGlyphChanged(benchmark::State& state) { RunComparator(state, "hmtx"); }
BENCHMARK(BM_HmtxEveryGlyphChanged)->Unit(benchmark::kMillisecond);

void BM_PostEveryNameChanged(benchmark::State& state) { RunComparator(state, "post"); }
BENCHMARK(BM_PostEveryNameChanged)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
