// Damaged and hostile fonts: tables cut short, counts and offsets set to extremes,
// bytes scrambled. Every comparison and dump must finish, stay inside the tables
// (the sanitizers watch) and print a bounded report.
#include <gtest/gtest.h>

#include <random>

#include "VellCmpFonts.h"
#include "comparators/TTableComparator.h"
#include "dumpers/MakeTableDumper.h"
#include "support/Harness.h"

namespace {

constexpr size_t kReportLimit = 16u << 20;

// A font with every table that has a handler of its own, plus one that has not.
FontTables EveryHandledTable() {
    FontTables font = SampleFont();
    font["vhea"] = MakeHhea(2);
    font["vmtx"] = MakeHmtx({{1000, 10}, {1000, 20}}, {30, 40});
    font["hsty"] = TableWriter().U32(0x00010000).U16(0).U16(40).U16(20).Zeros(12);
    font["hdmx"] = TableWriter().U16(0).U16(2).U32(8).U8(12).U8(9).U8(6).U8(3).U8(9).U8(9).U8(0).U8(0)
                       .U8(16).U8(12).U8(8).U8(4).U8(12).U8(12).U8(0).U8(0);
    Bytes ebsc = TableWriter().U32(0x00020000).U32(2);
    for (int i = 0; i < 56; ++i) ebsc.push_back(static_cast<uint8_t>(i * 7));
    font["EBSC"] = ebsc;
    font["kern"] = Bytes(24, 3);
    return font;
}

// One damage of the kinds a broken build or a hostile file brings.
void Damage(FontTables& font, std::mt19937& random) {
    auto& [tag, bytes] = font.tables[random() % font.tables.size()];
    switch (random() % 4) {
        case 0:  // cut short
            bytes.resize(bytes.empty() ? 0 : random() % bytes.size());
            break;
        case 1:  // an extreme 16-bit value where a count or offset may be
            if (bytes.size() >= 2) SetU16(bytes, (random() % (bytes.size() - 1)) & ~size_t{1}, 0xFFFF);
            break;
        case 2:  // an extreme 32-bit value
            if (bytes.size() >= 4) SetU32(bytes, (random() % (bytes.size() - 3)) & ~size_t{1}, 0xFFFFFFF0);
            break;
        default:  // scrambled bytes
            for (uint8_t& byte : bytes)
                if (random() % 8 == 0) byte = static_cast<uint8_t>(random());
            break;
    }
}

size_t DumpEveryTable(const FontTables& tables) {
    LoadedFont font(tables);
    CapturedStream out;
    for (const auto& [tag, bytes] : tables.tables) {
        auto dumper = MakeTableDumper(font.font(), VellMakeTag({tag[0], tag[1], tag[2], tag[3], '\0'}), out.file());
        if (dumper) dumper->DumpTable();
    }
    return out.Text().size();
}

TEST(DamagedFonts, EveryComparisonAndDumpFinishesWithABoundedReport) {
    SwitchesForTest switches(true, true);
    std::mt19937 random(20261123);
    for (int round = 0; round < 300; ++round) {
        FontTables original = EveryHandledTable(), modified = EveryHandledTable();
        for (int damages = 1 + round % 3; damages > 0; --damages) Damage(modified, random);
        EXPECT_LT(DiffReport(modified, original).size(), kReportLimit) << "round " << round;
        EXPECT_LT(DiffReport(original, modified).size(), kReportLimit) << "round " << round;
        EXPECT_LT(DumpEveryTable(modified), kReportLimit) << "round " << round;
    }
}

TEST(DamagedFonts, ExtremeGlyphAndMetricCountsOverTinyTables) {
    FontTables original = EveryHandledTable(), modified = EveryHandledTable();
    for (FontTables* font : {&original, &modified}) {
        SetU16((*font)["maxp"], 4, 0xFFFF);
        SetU16((*font)["hhea"], 34, 0xFFFF);
        SetU16((*font)["vhea"], 34, 0xFFFF);
    }
    SetU16(modified["hhea"], 34, 1);
    SetU16(modified["vhea"], 34, 1);
    modified["hmtx"].resize(6);
    modified["vmtx"].resize(6);
    EXPECT_LT(DiffReport(modified, original).size(), kReportLimit);
    EXPECT_LT(DumpEveryTable(modified), kReportLimit);
}

}  // namespace
