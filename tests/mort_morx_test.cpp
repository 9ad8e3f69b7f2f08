#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/mort_morx.h"

namespace {

// MakeMetamorphosis' samples: two chains, the second with a ligature subtable.
const Bytes kMortSample = MakeMetamorphosis(kMort), kMorxSample = MakeMetamorphosis(kMorx);

template <typename Comparator>
std::string Compare(const Bytes& modified, const Bytes& original, bool frame = false) {
    CapturedStream out;
    Comparator comparator(VelmNewHandle(modified), VelmNewHandle(original), out.file());
    frame ? comparator.DumpTable() : comparator.DumpTableDeltas();
    return out.Text();
}

TEST(Mort, DefaultFlagsAreReportedWhileTheChainStructureHoldsAndHexRowsInOneFrameOnceItChanges) {
    const std::string secondChain = "\tChain flags:\t1\n\t\tmod :\t0x00000009\n\t\torig:\t0x00000001\n";
    Bytes modified = kMortSample;
    SetU32(modified, 48, 9);  // the second chain's default flags
    EXPECT_EQ(Compare<TMORTTableComparator>(modified, kMortSample), secondChain);
    SetU32(modified, 0, 0x00020000);  // whatever the version, and whatever follows the last chain
    modified.insert(modified.end(), {1, 2, 3});
    EXPECT_EQ(Compare<TMORTTableComparator>(modified, kMortSample), secondChain);
    SetU16(modified, 20, 7);  // the first chain's first feature type
    std::string report = Compare<TMORTTableComparator>(modified, kMortSample, true);
    EXPECT_EQ(report.find("Chain flags"), std::string::npos);
    EXPECT_NE(report.find("\n==> 0x00000010\t00 01 00 01 00 07 "), std::string::npos);
    EXPECT_EQ(report.find("##### Table"), report.rfind("##### Table"));
}

TEST(Morx, FeatureEntriesAreReportedUnderTheChainIndexWithTheModifiedValueTwice) {
    // Each case changes chain 1's entry 0, at byte 72, in one of the two tables.
    const struct { size_t offset; bool original; uint32_t value; const char* report; } kCases[] = {
        {72, false, 0x00050000, "\t\t\tFeature type:\t1\n\t\t\tmod :\t5\n\t\t\torig:\t5\n"},
        {72, false, 0x00020003, "\t\t\tFeature selector:\t1\n\t\t\tmod :\t3\n\t\t\torig:\t3\n"},
        // New enable flags also differ from the original disable flags.
        {76, false, 8, "\t\t\tFeature selector:\t0x00000001\n\t\t\tmod :\t0x00000008\n\t\t\torig:\t0x00000008\n"
                       "\t\t\tFeature selector:\t0x00000001\n\t\t\tmod :\t0x00000002\n\t\t\torig:\t0x00000002\n"},
        // Original disable flags unlike its enable flags: reported though nothing changed.
        {80, true, ~2u, "\t\t\tFeature selector:\t0x00000001\n\t\t\tmod :\t0x00000002\n\t\t\torig:\t0x00000002\n"},
    };
    for (const auto& c : kCases) {
        Bytes modified = kMorxSample, original = kMorxSample;
        SetU32(c.original ? original : modified, c.offset, c.value);
        EXPECT_EQ(Compare<TMORXTableComparator>(modified, original), "\t\tChain feature:\t0\n" + std::string(c.report));
    }
}

TEST(MortMorx, DumperShowsTheLigatureStateTable) {
    // 'mort' lists its class array; 'morx' lists its class lookup's one segment (last glyph, first glyph, class).
    const std::pair<std::string, std::string> kCases[] = {
        {DumpContents<TMORTTableDumper>(kMortSample),
         "\t\t\t\t\tNumber of classes:\t5\n\t\t\t\t\tOffset to class table:\t0x000E\n"
         "\t\t\t\t\tOffset to state array table:\t0x0016\n\t\t\t\t\tOffset to entry table:\t0x0020\n"
         "\t\t\t\t\tClass table:\n\t\t\t\t\t\tFirst glyph:\t3\n\t\t\t\t\t\tNumber of glyph:\t3\n"
         "\t\t\t\t\t\t3:\t4\n\t\t\t\t\t\t4:\t4\n\t\t\t\t\t\t5:\t1\n"},
        {DumpContents<TMORXTableDumper>(kMorxSample),
         "\t\t\t\t\tNumber of classes:\t5\n\t\t\t\t\tOffset to class table:\t0x0000001C\n"
         "\t\t\t\t\tOffset to state array table:\t0x00000034\n\t\t\t\t\tOffset to entry table:\t0x00000048\n"
         "\t\t\t\t\tClass table:\n\t\t\t\t\t\tFormat:\t2\n\t\t\t\t\t\tFirst glyph:\t3\n"
         "\t\t\t\t\t\tLast glyph:\t5\n\t\t\t\t\t\tClass:\t4\n"},
    };
    for (const auto& [dump, classes] : kCases)
        EXPECT_EQ(dump.substr(dump.find("\t\t\t\tState table header:\n")),
                  "\t\t\t\tState table header:\n" + classes +
                      "\t\t\t\t\tState table:\n\t\t\t\t\t\tState count:\t2\n\t\t\t\t\t\t\t0\t1\t2\t3\t4\n"
                      "\t\t\t\t\t\ts0\t0\t0\t0\t0\t1\n\t\t\t\t\t\ts1\t0\t0\t0\t2\t1\n");
}

// Every handler on every prefix of a sample, and on the sample with a count, length
// or offset set to 0 or to an extreme, finishes with a bounded report.
template <typename Dumper, typename Comparator>
void ExpectBoundedReports(const Bytes& sample) {
    std::vector<Bytes> damaged;
    for (size_t length = 0; length < sample.size(); ++length)
        damaged.emplace_back(sample.begin(), sample.begin() + length);
    for (size_t at = 0; at + 4 <= sample.size(); at += 2)
        for (uint32_t value : {0u, 0xFFFFu, 0xFFFFFFF0u}) SetU32(damaged.emplace_back(sample), at, value);
    for (const Bytes& bytes : damaged)
        EXPECT_LT(DumpContents<Dumper>(bytes).size() + Compare<Comparator>(bytes, sample).size() +
                      Compare<Comparator>(sample, bytes).size(), 64u << 10);
}

TEST(MortMorx, TruncatedAndHostileTablesStayBounded) {
    ExpectBoundedReports<TMORTTableDumper, TMORTTableComparator>(kMortSample);
    ExpectBoundedReports<TMORXTableDumper, TMORXTableComparator>(kMorxSample);
}

}  // namespace
