#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/feat.h"

namespace {

struct Feature {
    uint16_t type, flags, name;
    std::vector<std::pair<uint16_t, uint16_t>> settings;  // (setting, name ID)
};

// A 'feat' table: the records, then each record's settings in record order.
Bytes Feat(const std::vector<Feature>& features) {
    TableWriter feat;
    feat.U32(0x00010000).U16(static_cast<uint32_t>(features.size())).U16(0).U32(0);
    uint32_t settingTable = 12 + 12 * static_cast<uint32_t>(features.size());
    for (const Feature& f : features) {
        feat.U16(f.type).U16(static_cast<uint32_t>(f.settings.size())).U32(settingTable).U16(f.flags).U16(f.name);
        settingTable += 4 * static_cast<uint32_t>(f.settings.size());
    }
    for (const Feature& f : features)
        for (auto [setting, name] : f.settings) feat.U16(setting).U16(name);
    return feat;
}

std::string Sections(const std::string& changed) {
    return "### Added features:\n\n\n### End added features:\n\n### Deleted features:\n\n\n### End deleted "
           "features:\n\n"
           "### Changed features:\n\n" +
           changed + "\n### End changed features:\n\n";
}

// SampleFont names 1 "Sample", 2 "Regular" and 4 "Sample Regular".
class FeatTest : public testing::Test {
protected:
    const std::vector<Feature> fFeatures = {{1, 0x8000, 1, {{0, 2}, {2, 4}}}, {3, 0xC000, 2, {{0, 1}}}};

    std::string Deltas(const std::vector<Feature>& modified, const std::vector<Feature>& original) const {
        FontTables modifiedFont = SampleFont(), originalFont = SampleFont();
        modifiedFont["feat"] = Feat(modified);
        originalFont["feat"] = Feat(original);
        return CompareDeltas(modifiedFont, originalFont, "feat");
    }
};

TEST_F(FeatTest, ReorderedSettingsAreAChangeAndEqualTablesPrintEmptySections) {
    EXPECT_EQ(Deltas(fFeatures, fFeatures), Sections(""));
    std::vector<Feature> modified = fFeatures;
    std::swap(modified[0].settings[0], modified[0].settings[1]);
    const std::string zero = "\t\t\tSelector:\t0\n\t\t\tName:\t2 \"Regular\"\n";
    const std::string two = "\t\t\tSelector:\t2\n\t\t\tName:\t4 \"Sample Regular\"\n";
    const std::string head =
        "\t\tFeature type:\t1\n\t\tFeature flags:\t0x8000\n\t\tName:\t1 \"Sample\"\n\t\tSelector count:\t2\n";
    EXPECT_EQ(Deltas(modified, fFeatures), Sections("\tChanged feature:\t1\n\tOld data\n" + head + zero + two +
                                                    "\n\tNew data\n" + head + two + zero + "\n"));
}

TEST_F(FeatTest, AFeatureTypeIsComparedWithEveryOriginalRecordOfThatType) {
    std::vector<Feature> original = fFeatures, modified = fFeatures;
    original.push_back({3, 0x4000, 2, {{0, 1}}});
    auto reports = [](const std::string& text) {
        size_t count = 0;
        const std::string line = "\tChanged feature:\t3\n";
        for (size_t at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) ++count;
        return count;
    };
    EXPECT_EQ(reports(Deltas(modified, original)), 1u);  // equal to the first record of type 3
    modified[1].name = 4;
    EXPECT_EQ(reports(Deltas(modified, original)), 2u);
}

TEST_F(FeatTest, TruncatedAndHostileTablesStayBounded) {
    auto sizes = [](const Bytes& modified, const Bytes& original) {
        CapturedStream out;
        TFEATTableComparator(VelmNewHandle(modified), VelmNewHandle(original), out.file()).DumpTableDeltas();
        return out.Text().size() + DumpContents<TFEATTableDumper>(modified).size();
    };
    Bytes feat = Feat(fFeatures);
    for (size_t length = 0; length < feat.size(); ++length)
        EXPECT_LT(sizes(Bytes(feat.begin(), feat.begin() + static_cast<std::ptrdiff_t>(length)), feat), 4000u);
    // 340 records of one type, each claiming 65535 settings at offset 0 of a 4 KB
    // table, every one unlike every record of the other table.
    auto hostile = [](uint16_t flags) {
        TableWriter table;
        table.U32(0x00010000).U16(0xFFFF).U16(0).U32(0);
        while (table.bytes().size() + 12 <= 4096) table.U16(1).U16(0xFFFF).U32(0).U16(flags).U16(0);
        return table.bytes();
    };
    EXPECT_LT(sizes(hostile(0), hostile(1)), 4u << 20);
    EXPECT_LT(sizes(Bytes(30, 0xFF), Bytes(30, 0xFE)), 1000u);
}

}  // namespace
