#include "support/Harness.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "VellCmpFonts.h"
#include "comparators/TTableComparator.h"
#include "dumpers/MakeTableDumper.h"

CapturedStream::CapturedStream() { fFile = open_memstream(&fBuffer, &fSize); }

CapturedStream::~CapturedStream() {
    if (fFile) std::fclose(fFile);
    std::free(fBuffer);
}

std::string CapturedStream::Text() {
    std::fflush(fFile);
    return std::string(fBuffer, fSize);
}

namespace {

// With VELLCMP_SEED_DIR set, every distinct font the tests build is written there:
// the fuzzers' seed corpus, one font for each table kind and damage the tests know.
void KeepAsSeed(const Bytes& fileBytes) {
    const char* directory = std::getenv("VELLCMP_SEED_DIR");
    if (directory == nullptr) return;
    std::string text(fileBytes.begin(), fileBytes.end());
    std::ofstream(std::string(directory) + "/" + std::to_string(std::hash<std::string>{}(text)), std::ios::binary)
        << text;
}

VellTag TagOf(const char* tag) { return VellMakeTag({tag[0], tag[1], tag[2], tag[3], '\0'}); }

std::string RunComparator(const FontTables& modified, const FontTables& original, const char* tag, bool frame) {
    LoadedFont modifiedFont(modified), originalFont(original);
    TFontContext modifiedContext(modifiedFont.font()), originalContext(originalFont.font());
    CapturedStream out;
    auto comparator = MakeTableComparator(modifiedContext, originalContext, TagOf(tag), out.file());
    if (comparator) frame ? comparator->DumpTable() : comparator->DumpTableDeltas();
    return out.Text();
}

}  // namespace

LoadedFont::LoadedFont(const FontTables& tables) : LoadedFont(BuildSfnt(tables)) {}

LoadedFont::LoadedFont(const Bytes& fileBytes, bool seed) {
    if (seed) KeepAsSeed(fileBytes);
    ErrorRecord record;
    fList = VellMakeFontListFromBytes(VellMappedFile::FromBytes(fileBytes), &record);
    if (!fList || fList->entries.empty()) throw std::runtime_error("not a font");
}

VellFontRef LoadedFont::font() const { return fList->entries[0].font; }

std::string CompareDeltas(const FontTables& modified, const FontTables& original, const char* tag) {
    return RunComparator(modified, original, tag, false);
}

std::string CompareTable(const FontTables& modified, const FontTables& original, const char* tag) {
    return RunComparator(modified, original, tag, true);
}

std::string DiffReport(const FontTables& modified, const FontTables& original, int32_t* code) {
    LoadedFont modifiedFont(modified), originalFont(original);
    CapturedStream out;
    FILE* saved = std::exchange(gReportFile, out.file());
    ErrorRecord record;
    testing::internal::CaptureStderr();
    DiffFonts(modifiedFont.font(), originalFont.font(), &record);
    testing::internal::GetCapturedStderr();
    gReportFile = saved;
    if (code != nullptr) *code = record.code;
    return out.Text();
}

std::string DumpTable(const FontTables& font, const char* tag) {
    LoadedFont loaded(font);
    CapturedStream out;
    TFontContext context(loaded.font());
    auto dumper = MakeTableDumper(context, TagOf(tag), out.file());
    if (dumper) dumper->DumpTable();
    return out.Text();
}

OpenTypeForTest::OpenTypeForTest() { gOpenType = 1; }
OpenTypeForTest::~OpenTypeForTest() { gOpenType = 0; }

SwitchesForTest::SwitchesForTest(bool postScriptNames, bool unicodeNames) {
    gShowPostScriptNames = postScriptNames;
    gShowUnicodeNames = unicodeNames;
}

SwitchesForTest::~SwitchesForTest() { gShowPostScriptNames = gShowUnicodeNames = 0; }
