#include <gtest/gtest.h>

#include <array>

#include "support/Harness.h"
#include "tables/mort_morx.h"

namespace {

enum Format { kMort, kMorx };

// 'mort' keeps its counts and subtable fields in 16 bits, 'morx' in 32.
TableWriter& Wide(TableWriter& writer, Format format, size_t value) {
    return format == kMort ? writer.U16(static_cast<uint32_t>(value)) : writer.U32(static_cast<uint32_t>(value));
}

Bytes Append(Bytes head, const Bytes& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

Bytes Words(std::initializer_list<uint16_t> words) {
    TableWriter writer;
    for (uint16_t word : words) writer.U16(word);
    return writer;
}

Bytes Subtable(Format format, uint32_t coverage, const Bytes& body) {
    TableWriter header;
    Wide(Wide(header, format, body.size() + (format == kMort ? 8 : 12)), format, coverage).U32(1);
    return Append(header, body);
}

// A chain whose feature entries are (type, setting, enable, disable) each.
Bytes Chain(Format format, uint32_t flags, const std::vector<std::array<uint32_t, 4>>& entries,
            const std::vector<Bytes>& subtables) {
    TableWriter rest;
    for (auto [type, setting, enable, disable] : entries) rest.U16(type).U16(setting).U32(enable).U32(disable);
    Bytes body = rest;
    for (const Bytes& subtable : subtables) body = Append(body, subtable);
    TableWriter header;
    header.U32(flags).U32(static_cast<uint32_t>(body.size()) + (format == kMort ? 12 : 16));
    Wide(Wide(header, format, entries.size()), format, subtables.size());
    return Append(header, body);
}

// Two chains; the second holds a ligature subtable whose state table has five
// classes (glyphs 3 to 5 in classes 4, 4, 1) and two states.
Bytes Sample(Format format) {
    Bytes ligature = format == kMort
                         ? Words({5, 14, 22, 32, 0, 0, 0, 3, 3, 0x0404, 0x0100, 0, 0, 0x0100, 0, 0x0201, 0, 0})
                         : Words({0, 5, 0, 28, 0, 52, 0, 72, 0, 78, 0, 78, 0, 78, 2, 6, 2, 12, 1, 0, 5, 3, 4, 0xFFFF,
                                  0xFFFF, 0, 0, 0, 0, 0, 1, 0, 0, 0, 2, 1, 0, 0, 0});
    Bytes table = TableWriter().U32(format == kMort ? 0x00010000 : 0x00020000).U32(2);
    table = Append(table, Chain(format, 3, {{1, 0, 1, 1}}, {Subtable(format, 1, Bytes(8, 0))}));
    return Append(table, Chain(format, 1, {{2, 0, 2, 2}, {3, 1, 4, 4}},
                               {Subtable(format, 1, Bytes(4, 7)), Subtable(format, 0x2002, ligature)}));
}

class MetamorphosisTest : public testing::Test {
protected:
    const Bytes fMort = Sample(kMort), fMorx = Sample(kMorx);
    static constexpr size_t kSecondMortChain = 48;
};

template <typename Comparator>
std::string Compare(const Bytes& modified, const Bytes& original, bool frame = false) {
    CapturedStream out;
    Comparator comparator(VelmNewHandle(modified), VelmNewHandle(original), out.file());
    frame ? comparator.DumpTable() : comparator.DumpTableDeltas();
    return out.Text();
}

TEST_F(MetamorphosisTest, MortWithOnlyDefaultFlagsChangedReportsThoseChainsWhateverFollowsTheLastChain) {
    const std::string secondChain = "\tChain flags:\t1\n\t\tmod :\t0x00000009\n\t\torig:\t0x00000001\n";
    Bytes modified = fMort;
    SetU32(modified, kSecondMortChain, 9);
    EXPECT_EQ(Compare<TMORTTableComparator>(modified, fMort), secondChain);
    SetU32(modified, 0, 0x00020000);
    modified.insert(modified.end(), {1, 2, 3});
    EXPECT_EQ(Compare<TMORTTableComparator>(modified, fMort), secondChain);
}

TEST_F(MetamorphosisTest, MortStructureChangeListsHexRowsInsideTheOneFrame) {
    Bytes modified = fMort;
    SetU32(modified, kSecondMortChain, 9);
    SetU16(modified, 20, 7);  // the first chain's first feature type
    std::string report = Compare<TMORTTableComparator>(modified, fMort, true);
    EXPECT_EQ(report.find("Chain flags"), std::string::npos);
    EXPECT_NE(report.find("\n==> 0x00000010\t00 01 00 01 00 07 "), std::string::npos);
    EXPECT_EQ(report.find("End table comparison"), report.rfind("End table comparison"));
    EXPECT_EQ(report.find("##### Table"), report.rfind("##### Table"));
}

TEST_F(MetamorphosisTest, MorxFeatureEntriesAreReportedUnderTheChainIndexWithTheModifiedValueTwice) {
    // Each case changes chain 1's entry 1, at byte 84, in one of the two tables.
    struct Case {
        size_t offset;
        bool original;
        uint32_t value;
        const char* report;
    } cases[] = {
        {84, false, 0x00050001, "\t\tChain feature:\t1\n\t\t\tFeature type:\t1\n\t\t\tmod :\t5\n\t\t\torig:\t5\n"},
        {84, false, 0x00030002, "\t\tChain feature:\t1\n\t\t\tFeature selector:\t1\n\t\t\tmod :\t2\n\t\t\torig:\t2\n"},
        // New enable flags also differ from the original disable flags.
        {88, false, 8,
         "\t\tChain feature:\t1\n"
         "\t\t\tFeature selector:\t0x00000001\n\t\t\tmod :\t0x00000008\n\t\t\torig:\t0x00000008\n"
         "\t\t\tFeature selector:\t0x00000001\n\t\t\tmod :\t0x00000004\n\t\t\torig:\t0x00000004\n"},
        // Original disable flags unlike its enable flags: reported though nothing changed.
        {92, true, 0xFFFFFFFB,
         "\t\tChain feature:\t1\n"
         "\t\t\tFeature selector:\t0x00000001\n\t\t\tmod :\t0x00000004\n\t\t\torig:\t0x00000004\n"},
    };
    for (const Case& c : cases) {
        Bytes modified = fMorx, original = fMorx;
        SetU32(c.original ? original : modified, c.offset, c.value);
        EXPECT_EQ(Compare<TMORXTableComparator>(modified, original), c.report) << c.offset;
    }
}

TEST_F(MetamorphosisTest, MortDumperShowsTheLigatureStateTable) {
    std::string dump = DumpContents<TMORTTableDumper>(fMort);
    EXPECT_EQ(dump.substr(dump.find("\t\t\t\tState table header:\n")),
              "\t\t\t\tState table header:\n"
              "\t\t\t\t\tNumber of classes:\t5\n\t\t\t\t\tOffset to class table:\t0x000E\n"
              "\t\t\t\t\tOffset to state array table:\t0x0016\n\t\t\t\t\tOffset to entry table:\t0x0020\n"
              "\t\t\t\t\tClass table:\n\t\t\t\t\t\tFirst glyph:\t3\n\t\t\t\t\t\tNumber of glyph:\t3\n"
              "\t\t\t\t\t\t3:\t4\n\t\t\t\t\t\t4:\t4\n\t\t\t\t\t\t5:\t1\n"
              "\t\t\t\t\tState table:\n\t\t\t\t\t\tState count:\t2\n"
              "\t\t\t\t\t\t\t0\t1\t2\t3\t4\n\t\t\t\t\t\ts0\t0\t0\t0\t0\t1\n\t\t\t\t\t\ts1\t0\t0\t0\t2\t1\n");
}

template <typename Dumper, typename Comparator>
size_t ReportSizes(const Bytes& damaged, const Bytes& sample) {
    return DumpContents<Dumper>(damaged).size() + Compare<Comparator>(damaged, sample).size() +
           Compare<Comparator>(sample, damaged).size();
}

// Every handler on every prefix of the samples, and on the samples with a count,
// length or offset set to 0 or to an extreme, finishes with a bounded report.
TEST_F(MetamorphosisTest, TruncatedAndHostileTablesStayBounded) {
    for (Format format : {kMort, kMorx}) {
        const Bytes& sample = format == kMort ? fMort : fMorx;
        std::vector<Bytes> damaged;
        for (size_t length = 0; length < sample.size(); ++length)
            damaged.emplace_back(sample.begin(), sample.begin() + static_cast<std::ptrdiff_t>(length));
        for (size_t at = 0; at + 4 <= sample.size(); at += 2)
            for (uint32_t value : {0u, 0xFFFFu, 0xFFFFFFF0u}) {
                damaged.push_back(sample);
                SetU32(damaged.back(), at, value);
            }
        for (const Bytes& bytes : damaged)
            EXPECT_LT((format == kMort ? ReportSizes<TMORTTableDumper, TMORTTableComparator>(bytes, sample)
                                       : ReportSizes<TMORXTableDumper, TMORXTableComparator>(bytes, sample)),
                      64u << 10);
    }
}

}  // namespace
