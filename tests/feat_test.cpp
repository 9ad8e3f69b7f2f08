#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/feat.h"

namespace {

using ::testing::HasSubstr;

// The comparator without fonts: names print as their IDs alone.
std::string Deltas(const Bytes& modified, const Bytes& original) {
    CapturedStream out;
    TFEATTableComparator(VelmNewHandle(modified), VelmNewHandle(original), out.file()).DumpTableDeltas();
    return out.Text();
}

const std::vector<Feature> kFeatures = {{1, 0x8000, 1, {{0, 2}, {2, 4}}}, {3, 0xC000, 2, {{0, 1}}}};

TEST(Feat, AddedAndChangedFeaturesPrintTheirBlocksAndEverySectionPrintsEvenWhenEmpty) {
    std::vector<Feature> modified = kFeatures;
    std::swap(modified[0].settings[0], modified[0].settings[1]);  // settings are compared in order
    modified.push_back({5, 0, 2, {}});
    EXPECT_EQ(Deltas(MakeFeat(modified), MakeFeat(kFeatures)),
              "### Added features:\n\n\tFeature type:\t5\n\tFeature flags:\t0x0000\n\tName:\t2\n\tSelector count:\t0\n"
              "\n\n### End added features:\n\n### Deleted features:\n\n\n### End deleted features:\n\n"
              "### Changed features:\n\n\tChanged feature:\t1\n\tOld data\n\t\tFeature type:\t1\n"
              "\t\tFeature flags:\t0x8000\n\t\tName:\t1\n\t\tSelector count:\t2\n\t\t\tSelector:\t0\n\t\t\tName:\t2\n"
              "\t\t\tSelector:\t2\n\t\t\tName:\t4\n\n\tNew data\n\t\tFeature type:\t1\n\t\tFeature flags:\t0x8000\n"
              "\t\tName:\t1\n\t\tSelector count:\t2\n\t\t\tSelector:\t2\n\t\t\tName:\t4\n\t\t\tSelector:\t0\n"
              "\t\t\tName:\t2\n\n\n### End changed features:\n\n");
}

TEST(Feat, AFeatureIsComparedWithEveryOriginalRecordOfItsTypeAndDeletedByTypeAlone) {
    std::vector<Feature> modified = kFeatures, original = kFeatures;
    original.insert(original.end(), {{3, 0x4000, 2, {{0, 1}}}, {7, 0, 2, {}}});
    std::string report = Deltas(MakeFeat(modified), MakeFeat(original));  // equal to the first record of type 3 alone
    EXPECT_THAT(report, HasSubstr("### Deleted features:\n\n\tFeature type:\t7\n"));
    EXPECT_THAT(report, HasSubstr("feature:\t3\n\tOld data\n\t\tFeature type:\t3\n\t\tFeature flags:\t0x4000"));
    modified[1].name = 4;
    report = Deltas(MakeFeat(modified), MakeFeat(original));
    EXPECT_NE(report.find("Changed feature:\t3\n"), report.rfind("Changed feature:\t3\n"));  // reported twice
}

TEST(Feat, HostileSettingCountsStayBounded) {
    auto sizes = [](const Bytes& modified, const Bytes& original) {
        return Deltas(modified, original).size() + DumpContents<TFEATTableDumper>(modified).size();
    };
    // 340 records of one type, each claiming 65535 settings at offset 0, unlike every record of the other table.
    auto hostile = [](uint8_t flags) {
        Bytes table = TableWriter().U32(0x00010000).U16(0xFFFF).U16(0).U32(0);
        for (int i = 0; i < 340; ++i) table.insert(table.end(), {0, 1, 0xFF, 0xFF, 0, 0, 0, 0, 0, flags, 0, 0});
        return table;
    };
    EXPECT_LT(sizes(hostile(0), hostile(1)), 4u << 20);
}

}  // namespace
