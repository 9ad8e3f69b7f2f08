// Fonts built in code for the tests: big-endian table writers, sfnt, collection
// and resource-fork file assembly, a small sample font, temporary files and a
// runner for the command-line tools.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using Bytes = std::vector<uint8_t>;

// Appends big-endian fields; Set* overwrite one in place.
class TableWriter {
public:
    TableWriter& U8(uint32_t v);
    TableWriter& U16(uint32_t v);
    TableWriter& U32(uint32_t v);
    TableWriter& Tag(const char* tag);
    TableWriter& Zeros(size_t count);
    TableWriter& Text(const std::string& text);
    const Bytes& bytes() const { return fBytes; }
    operator Bytes() const { return fBytes; }

private:
    Bytes fBytes;
};

void SetU8(Bytes& bytes, size_t offset, uint8_t v);
void SetU16(Bytes& bytes, size_t offset, uint16_t v);
void SetU32(Bytes& bytes, size_t offset, uint32_t v);

// Tables of one font, in directory order.
struct FontTables {
    std::vector<std::pair<std::string, Bytes>> tables;
    Bytes& operator[](const std::string& tag);  // adds the table when missing
    void Remove(const std::string& tag);
};

Bytes BuildSfnt(const FontTables& font);
Bytes BuildCollection(const std::vector<FontTables>& fonts);
Bytes BuildResourceFork(const std::vector<FontTables>& fonts);

// ---- Tables of a small, well-formed TrueType font ----
Bytes MakeHead();
Bytes MakeHhea(uint16_t numberOfHMetrics);
Bytes MakeMaxp(uint16_t numGlyphs);
Bytes MakeOS2(size_t size);  // 78, 86 or 96 bytes, or any other size of the older layout
// Long metrics (advance, side bearing) then trailing side bearings.
Bytes MakeHmtx(const std::vector<std::pair<uint16_t, int16_t>>& longMetrics,
               const std::vector<int16_t>& trailingSideBearings = {});
// A format 2 'post' naming each glyph (standard names are found in the standard order).
Bytes MakePost(const std::vector<std::string>& glyphNames);
// Name records on the Microsoft platform (Unicode BMP, US English), sorted as given.
Bytes MakeName(const std::vector<std::pair<uint16_t, std::string>>& names);
struct NameEntry {
    uint16_t platformID, encodingID, languageID, nameID;
    Bytes text;  // already encoded
};
Bytes MakeNameRecords(const std::vector<NameEntry>& names);
Bytes Utf16BE(const std::string& ascii);

// A small font named fullName: 'head', 'hhea', 'maxp', 'OS/2', 'hmtx', 'post',
// 'name' with four glyphs (.notdef, space, A, B).
FontTables SampleFont(const std::string& fullName = "Sample Regular", const std::string& version = "Version 1.000");

// ---- Files and processes ----
class TempDir {
public:
    TempDir();
    ~TempDir();
    std::string Write(const std::string& name, const Bytes& bytes) const;
    std::string Path(const std::string& name) const { return fPath + "/" + name; }
    const std::string& path() const { return fPath; }

private:
    std::string fPath;
};

struct RunResult {
    int status = -1;
    std::string out, err;
};

// Runs a tool with arguments, no shell, and collects its output.
RunResult RunVellcmp(const std::vector<std::string>& arguments);
RunResult RunVelldump(const std::vector<std::string>& arguments);
std::string ReadFile(const std::string& path);
