// Runs the registry's comparators and the dumpers in-process on fonts built in
// code, and returns exactly what they print.
#pragma once

#include <cstdio>
#include <string>

#include "framework/VellFontFile.h"
#include "framework/VellMemory.h"
#include "support/FontBuilder.h"

// A stdio stream whose bytes can be read back.
class CapturedStream {
public:
    CapturedStream();
    ~CapturedStream();
    FILE* file() const { return fFile; }
    std::string Text();

private:
    FILE* fFile = nullptr;
    char* fBuffer = nullptr;
    size_t fSize = 0;
};

// A font held in memory, as the framework lists it. Unless told otherwise it is
// kept as a fuzzing seed (when VELLCMP_SEED_DIR is set).
class LoadedFont {
public:
    explicit LoadedFont(const FontTables& tables);
    explicit LoadedFont(const Bytes& fileBytes, bool seed = true);
    VellFontRef font() const;

private:
    VellFontListRef fList;
};

// What the registry's comparator for `tag` prints from DumpTableDeltas (CompareDeltas)
// or from its whole frame, DumpTable (CompareTable); empty when it makes none.
std::string CompareDeltas(const FontTables& modified, const FontTables& original, const char* tag);
std::string CompareTable(const FontTables& modified, const FontTables& original, const char* tag);
// The report DiffFonts prints for one pair (standard error is dropped); *code
// receives the record's code when given.
std::string DiffReport(const FontTables& modified, const FontTables& original, int32_t* code = nullptr);
// What DumpTable prints for the factory's dumper of `tag`.
std::string DumpTable(const FontTables& font, const char* tag);
// What DumpTableContents prints for a dumper made from the table alone.
template <typename Dumper>
std::string DumpContents(const Bytes& table) {
    CapturedStream out;
    Dumper(VelmNewHandle(table), out.file(), nullptr).DumpTableContents();
    return out.Text();
}

// --opentype for the life of a test or a damage round.
struct OpenTypeForTest {
    OpenTypeForTest();
    ~OpenTypeForTest();
};

// Sets the process-wide switches for one test and restores them after it.
struct SwitchesForTest {
    SwitchesForTest(bool postScriptNames, bool unicodeNames);
    ~SwitchesForTest();
};
