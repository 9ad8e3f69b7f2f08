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
    TableWriter& Append(const Bytes& bytes);
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

Bytes Joined(Bytes head, const Bytes& tail);
Bytes BuildSfnt(const FontTables& font);
Bytes BuildCollection(const std::vector<FontTables>& fonts);
Bytes BuildResourceFork(const std::vector<FontTables>& fonts);
// The tables of an sfnt in tests/fonts, as its directory lists them.
FontTables TestFontTables(const std::string& name);

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
// SampleFont with these glyphs and their 'loca'; short offsets pad each glyph to
// an even length.
FontTables GlyphFont(const std::vector<Bytes>& glyphs, bool longLoca = false);

// ---- Tables of the other handled kinds, as their handler tests build them ----
// An 'EBSC' stating `count` sizes, then `records` size records of bytes 0xE4 to 0xFF (signed fields negative).
Bytes MakeEbsc(uint32_t count, size_t records);
// A strike of one index subtable: ppemX, the glyphs it covers, its header, then the 32-bit words after it.
struct Strike {
    uint8_t ppem; uint16_t first, last, indexFormat, imageFormat; uint32_t imageData; std::vector<uint32_t> body;
};
// A 'bloc': the strike records, then each strike's one-entry index subtable array and its subtable.
Bytes MakeBloc(const std::vector<Strike>& strikes);
struct Feature { uint16_t type, flags, name; std::vector<std::pair<uint16_t, uint16_t>> settings; };  // (setting, name)
// A 'feat' table: the records, then each record's settings in record order.
Bytes MakeFeat(const std::vector<Feature>& features);
// A 'gvar' header with the given flags and glyph count, then the words after it.
Bytes MakeGvar(uint16_t flags, const std::vector<uint16_t>& words, uint16_t glyphs = 2);
using DeviceRecord = std::vector<uint8_t>;  // pixel size, maximum width, then the glyph widths
// An 'hdmx' of records of `size` bytes each.
Bytes MakeHdmx(const std::vector<DeviceRecord>& records, uint16_t version = 0, uint32_t size = 8);
enum MetamorphosisFormat { kMort, kMorx };
// Two chains; the second holds a ligature subtable whose state table has five
// classes (glyphs 3 to 5 in classes 4, 4, 1 in 'mort', all 4 in 'morx') and two states.
Bytes MakeMetamorphosis(MetamorphosisFormat format);
// A 'prop' whose format says whether the lookup (given in 16-bit words) is used.
Bytes MakeProp(uint16_t format, uint16_t defaultProperty, const std::vector<uint16_t>& lookup = {});

// ---- Layout tables ----
// A 'GDEF' 1.2: glyph 2 Base, 3 Mark, a caret at 300 on glyph 2, a mark glyph set {2, 3}.
Bytes MakeGdef();
struct TestLookup {
    uint16_t type;
    std::vector<Bytes> subtables;
    uint16_t flag = 0;
};
Bytes Coverage(const std::vector<uint16_t>& glyphs);
// ClassDef format 1 from glyph `start` on.
Bytes ClassDef(uint16_t start, const std::vector<uint16_t>& classes);
// A 'GSUB' or 'GPOS' with script 'latn' whose default language system lists every
// feature, in order.
Bytes LayoutTable(const std::vector<std::pair<std::string, std::vector<uint16_t>>>& features,
                  const std::vector<TestLookup>& lookups);
// PairPos format 1 with X advance values: (first, [(second, value)]).
Bytes PairPos1(const std::vector<std::pair<uint16_t, std::vector<std::pair<uint16_t, int16_t>>>>& sets);
// PairPos format 2 with X advance values: rows[class1][class2].
Bytes PairPos2(const std::vector<uint16_t>& covered, const Bytes& classDef1, const Bytes& classDef2,
               const std::vector<std::vector<int16_t>>& rows);
// SingleSubst format 2.
Bytes SingleSubst(const std::vector<uint16_t>& from, const std::vector<uint16_t>& to);
// LigatureSubst with one ligature set of one ligature: components -> ligature.
Bytes LigatureSubst(const std::vector<uint16_t>& components, uint16_t ligature);

// ---- Variable tables ----
// A 16.16 and an F2Dot14 value as their fields hold them.
uint32_t Fixed(double value);
uint32_t F2Dot14(double value);
struct AxisRow {
    const char* tag;
    double minimum, defaultValue, maximum;
    uint16_t nameID;
};
struct InstanceRow {
    uint16_t nameID;
    std::vector<double> coordinates;
    uint16_t postScriptNameID;
};
// An 'fvar' 1.0 whose instance records end with a postScriptNameID.
Bytes MakeFvar(const std::vector<AxisRow>& axes, const std::vector<InstanceRow>& instances);
// An 'avar' 1.0 of one axis's segment map: (from, to) pairs.
Bytes MakeAvar(const std::vector<std::pair<double, double>>& pairs);
// An item variation store over one axis: regions +1 and -1, one subtable whose
// items are the given rows of two byte deltas.
Bytes MakeStore(const std::vector<std::pair<int8_t, int8_t>>& rows);
// A 'STAT' 1.1 over 'wght' and 'wdth' with one axis value of each format: 1 "Bold"
// 700, 2 "Black" 900 in 800 to 900, 3 "Regular" 400 linked to linkedValue, 4 "Bold
// Condensed" at 700 and 75.
Bytes MakeStat(uint16_t elidedNameID, double linkedValue);
// An 'HVAR' (or with vertical a 'VVAR') over MakeStore's four items (10, -10) (0, 0)
// (20, item2) (30, -30): advances reached implicitly, side bearings through a map
// of glyph 0 to item 1 and glyph 1 on to item 0.
Bytes MakeMetricsVariations(bool vertical, int8_t item2);
// An 'MVAR' whose 'cpht' takes item 0 and 'xhgt' item xHeightItem of MakeStore's
// rows (10, -10) (0, 0) (20, -20) (30, -30).
Bytes MakeMvar(uint16_t xHeightItem);
// SampleFont over 'wght' 100 to 900 (default 400) with instances "Regular" and
// "Bold", and the names 256 to 265 that the variable tables' builders use.
FontTables VariableFont();

// SampleFont with one table of every tag the handler table has a row for, in
// directory order: the font the damaged-font rounds break table by table and a
// seed for the fuzzers. A new handler adds its table here.
FontTables EveryTableFont();

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
