#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/hhea_vhea.h"

namespace {

TEST(HheaVhea, FieldsInTableOrderEachInItsKindUnderHorizontalLabelsReservedWordsNumberedOnlyInComparisons) {
    FontTables original = SampleFont();
    original["vhea"] = MakeHhea(3);
    FontTables modified = original;
    // Reserved 2 compares raw and prints signed; the maximum advance and the long metric count are unsigned.
    SetU16(modified["hhea"], 28, 0xFFFF), SetU16(modified["hhea"], 10, 40000), SetU16(modified["hhea"], 34, 40000);
    SetU16(modified["hhea"], 6, static_cast<uint16_t>(-600)), SetU32(modified["hhea"], 0, 0x00018000);
    SetU16(modified["vhea"], 10, 900);
    EXPECT_EQ(CompareDeltas(modified, original, "hhea"),
              "\tVersion (mod ):\t1.32768\n\tVersion (orig):\t1.0\n\tDescent (mod ):\t-600\n\tDescent (orig):\t-500\n"
              "\tAdvance width maximum (mod ):\t40000\n\tAdvance width maximum (orig):\t1200\n"
              "\tReserved 2 (mod ):\t-1\n\tReserved 2 (orig):\t0\n"
              "\tNumber of long horizontal metrics (mod ):\t40000\n\tNumber of long horizontal metrics (orig):\t3\n");
    EXPECT_EQ(CompareDeltas(modified, original, "vhea"),
              "\tAdvance width maximum (mod ):\t900\n\tAdvance width maximum (orig):\t1200\n");
    const std::string dump =
        "\tVersion:\t1.32768\n\tAscent:\t1900\n\tDescent:\t-600\n\tLine gap:\t0\n\tAdvance width maximum:\t40000\n"
        "\tMinimum left-side bearing:\t-100\n\tMinimum right-side bearing:\t-50\n\tMaximum X-extent:\t1100\n"
        "\tCaret slope rise:\t1\n\tCaret slope run:\t0\n\tCaret offset:\t0\n\tReserved:\t0\n\tReserved:\t0\n"
        "\tReserved:\t-1\n\tReserved:\t0\n\tMetric data format:\t0\n\tNumber of long horizontal metrics:\t40000\n";
    EXPECT_EQ(DumpContents<THHEATableDumper>(modified["hhea"]), dump);
    EXPECT_EQ(DumpContents<TVHEATableDumper>(modified["hhea"]), dump);
}

}  // namespace
