#include "support/FontBuilder.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "framework/VellGlyphs.h"
#include "framework/VellTypes.h"
#include "framework/VellView.h"

TableWriter& TableWriter::U8(uint32_t v) {
    fBytes.push_back(static_cast<uint8_t>(v));
    return *this;
}
TableWriter& TableWriter::U16(uint32_t v) { return U8(v >> 8).U8(v); }
TableWriter& TableWriter::U32(uint32_t v) { return U16(v >> 16).U16(v); }
TableWriter& TableWriter::Tag(const char* tag) { return Text(std::string(tag, 4)); }
TableWriter& TableWriter::Zeros(size_t count) { return Text(std::string(count, '\0')); }
TableWriter& TableWriter::Text(const std::string& text) {
    fBytes.insert(fBytes.end(), text.begin(), text.end());
    return *this;
}
TableWriter& TableWriter::Append(const Bytes& bytes) {
    fBytes.insert(fBytes.end(), bytes.begin(), bytes.end());
    return *this;
}

void SetU8(Bytes& bytes, size_t offset, uint8_t v) { bytes.at(offset) = v; }
void SetU16(Bytes& bytes, size_t offset, uint16_t v) {
    SetU8(bytes, offset, static_cast<uint8_t>(v >> 8));
    SetU8(bytes, offset + 1, static_cast<uint8_t>(v));
}
void SetU32(Bytes& bytes, size_t offset, uint32_t v) {
    SetU16(bytes, offset, static_cast<uint16_t>(v >> 16));
    SetU16(bytes, offset + 2, static_cast<uint16_t>(v));
}

Bytes& FontTables::operator[](const std::string& tag) {
    for (auto& [name, bytes] : tables)
        if (name == tag) return bytes;
    return tables.emplace_back(tag, Bytes{}).second;
}
void FontTables::Remove(const std::string& tag) {
    std::erase_if(tables, [&](const auto& entry) { return entry.first == tag; });
}

namespace {

size_t Padded(size_t size) { return (size + 3) & ~size_t{3}; }

// The offset table and directory of one font whose tables are appended to *data,
// which lies at file offset dataStart.
Bytes Directory(const FontTables& font, size_t dataStart, Bytes* data) {
    TableWriter header;
    header.U32(0x00010000).U16(static_cast<uint32_t>(font.tables.size())).U16(0).U16(0).U16(0);
    for (const auto& [tag, bytes] : font.tables) {
        header.Tag(tag.c_str()).U32(0).U32(static_cast<uint32_t>(dataStart + data->size()));
        header.U32(static_cast<uint32_t>(bytes.size()));
        data->insert(data->end(), bytes.begin(), bytes.end());
        data->resize(Padded(data->size()), 0);
    }
    return header;
}


}  // namespace

Bytes Joined(Bytes out, const Bytes& more) {
    out.insert(out.end(), more.begin(), more.end());
    return out;
}

Bytes BuildSfnt(const FontTables& font) {
    Bytes data;
    Bytes directory = Directory(font, 12 + 16 * font.tables.size(), &data);
    return Joined(directory, data);
}

FontTables TestFontTables(const std::string& name) {
    std::string file = ReadFile(std::string(VELLCMP_SOURCE_DIR "/tests/fonts/") + name);
    VellView bytes(reinterpret_cast<const uint8_t*>(file.data()), file.size());
    FontTables font;
    for (size_t record = 12; record < 12 + 16 * size_t{bytes.u16(4)}; record += 16) {
        VellView table = bytes.sub(bytes.u32(record + 8), bytes.u32(record + 12));
        font[VellTagText(bytes.u32(record))] = Bytes(table.data(), table.data() + table.size());
    }
    return font;
}

Bytes BuildCollection(const std::vector<FontTables>& fonts) {
    TableWriter header;
    header.Tag("ttcf").U32(0x00010000).U32(static_cast<uint32_t>(fonts.size()));
    size_t at = 12 + 4 * fonts.size();
    for (const auto& font : fonts) {
        header.U32(static_cast<uint32_t>(at));
        at += 12 + 16 * font.tables.size();
    }
    Bytes out = header, data;
    for (const auto& font : fonts) out = Joined(out, Directory(font, at, &data));
    return Joined(out, data);
}

// The sfnt resources lie after a 256-byte header, each a length and an sfnt; the
// map's one type lists them.
Bytes BuildResourceFork(const std::vector<FontTables>& fonts) {
    const uint32_t dataOffset = 256;
    Bytes data;
    TableWriter map;
    map.Zeros(16).U32(0).U16(0).U16(0).U16(28).U16(0);  // header copy, next map, file ref, attributes, type list, names
    map.U16(0).Tag("sfnt").U16(static_cast<uint32_t>(fonts.size() - 1)).U16(10);  // one type; references at 2 + 8
    for (size_t i = 0; i < fonts.size(); ++i) {
        Bytes sfnt = BuildSfnt(fonts[i]);
        map.U16(static_cast<uint32_t>(128 + i)).U16(0xFFFF).U32(static_cast<uint32_t>(data.size())).U32(0);
        data = Joined(Joined(data, TableWriter().U32(static_cast<uint32_t>(sfnt.size()))), sfnt);
    }
    uint32_t dataLength = static_cast<uint32_t>(data.size());
    Bytes out = TableWriter().U32(dataOffset).U32(dataOffset + dataLength).U32(dataLength).U32(
        static_cast<uint32_t>(map.bytes().size()));
    out.resize(dataOffset, 0);
    return Joined(Joined(out, data), map);
}

// ---- Tables ----

Bytes MakeHead() {
    return TableWriter().U32(0x00010000).U32(0x00010000).U32(0x12345678).U32(0x5F0F3CF5).U16(0x000B).U16(2048)
        .U32(0).U32(3140000000u).U32(0).U32(3140000000u)  // created, modified: 2003-07-02
        .U16(static_cast<uint16_t>(-100)).U16(static_cast<uint16_t>(-200)).U16(1000).U16(1800)
        .U16(0).U16(9).U16(2).U16(0).U16(0);
}

Bytes MakeHhea(uint16_t numberOfHMetrics) {
    return TableWriter().U32(0x00010000).U16(1900).U16(static_cast<uint16_t>(-500)).U16(0).U16(1200)
        .U16(static_cast<uint16_t>(-100)).U16(static_cast<uint16_t>(-50)).U16(1100)
        .U16(1).U16(0).U16(0).Zeros(8).U16(0).U16(numberOfHMetrics);
}

Bytes MakeMaxp(uint16_t numGlyphs) {
    return TableWriter().U32(0x00010000).U16(numGlyphs).U16(40).U16(4).U16(0).U16(0).U16(2).U16(0).U16(16).U16(8)
        .U16(0).U16(64).U16(100).U16(0).U16(0);
}

Bytes MakeOS2(size_t size) {
    TableWriter os2;
    uint16_t version = size >= 96 ? 2 : size >= 86 ? 1 : 0;
    os2.U16(version).U16(1100).U16(400).U16(5).U16(0);
    for (int i = 0; i < 11; ++i) os2.U16(static_cast<uint32_t>(100 + i));  // subscript .. sFamilyClass
    os2.U8(2).Zeros(9);                                                     // PANOSE
    os2.U32(1).U32(0).U32(0).U32(0).Tag("VELL").U16(0x40).U16(0x20).U16(0x42);
    os2.U16(1500).U16(static_cast<uint16_t>(-500)).U16(0).U16(1900).U16(500);
    os2.U32(1).U32(0).U16(1000).U16(1400).U16(0).U16(0x20).U16(2);
    Bytes bytes = os2;
    bytes.resize(size, 0);
    return bytes;
}

Bytes MakeHmtx(const std::vector<std::pair<uint16_t, int16_t>>& longMetrics,
               const std::vector<int16_t>& trailingSideBearings) {
    TableWriter hmtx;
    for (auto [advance, sideBearing] : longMetrics) hmtx.U16(advance).U16(static_cast<uint16_t>(sideBearing));
    for (int16_t sideBearing : trailingSideBearings) hmtx.U16(static_cast<uint16_t>(sideBearing));
    return hmtx;
}

Bytes MakePost(const std::vector<std::string>& glyphNames) {
    TableWriter post;
    post.U32(0x00020000).U32(0).U16(static_cast<uint16_t>(-100)).U16(50).U32(0).Zeros(16);
    post.U16(static_cast<uint32_t>(glyphNames.size()));
    std::vector<std::string> custom;
    for (const std::string& name : glyphNames) {
        size_t index = std::find(std::begin(kVellStandardGlyphNames), std::end(kVellStandardGlyphNames), name) -
                       std::begin(kVellStandardGlyphNames);
        if (index == 258) custom.push_back(name);  // custom names follow the 258 standard ones
        post.U16(static_cast<uint32_t>(index == 258 ? 257 + custom.size() : index));
    }
    for (const std::string& name : custom) post.U8(static_cast<uint32_t>(name.size())).Text(name);
    return post;
}

Bytes Utf16BE(const std::string& ascii) {
    TableWriter out;
    for (char c : ascii) out.U16(static_cast<uint8_t>(c));
    return out;
}

Bytes MakeNameRecords(const std::vector<NameEntry>& names) {
    TableWriter name;
    name.U16(0).U16(static_cast<uint32_t>(names.size())).U16(static_cast<uint32_t>(6 + 12 * names.size()));
    Bytes storage;
    for (const NameEntry& entry : names) {
        name.U16(entry.platformID).U16(entry.encodingID).U16(entry.languageID).U16(entry.nameID);
        name.U16(static_cast<uint32_t>(entry.text.size())).U16(static_cast<uint32_t>(storage.size()));
        storage = Joined(storage, entry.text);
    }
    return Joined(name, storage);
}

Bytes MakeName(const std::vector<std::pair<uint16_t, std::string>>& names) {
    std::vector<NameEntry> entries;
    for (const auto& [id, text] : names) entries.push_back({3, 1, 0x409, id, Utf16BE(text)});
    return MakeNameRecords(entries);
}

FontTables SampleFont(const std::string& fullName, const std::string& version) {
    FontTables font;
    font["head"] = MakeHead();
    font["hhea"] = MakeHhea(3);
    font["maxp"] = MakeMaxp(4);
    font["OS/2"] = MakeOS2(96);
    font["hmtx"] = MakeHmtx({{1000, 0}, {500, 0}, {1200, 20}}, {30});
    font["post"] = MakePost({".notdef", "space", "A", "B"});
    std::string postScriptName = fullName;
    std::erase(postScriptName, ' ');
    font["name"] = MakeName({{1, "Sample"}, {2, "Regular"}, {4, fullName}, {5, version}, {6, postScriptName}});
    return font;
}

FontTables GlyphFont(const std::vector<Bytes>& glyphs, bool longLoca) {
    FontTables font = SampleFont();
    font["maxp"] = MakeMaxp(static_cast<uint16_t>(glyphs.size()));
    SetU16(font["head"], 50, longLoca);
    TableWriter glyf, loca;
    auto offset = [&] { longLoca ? loca.U32(glyf.bytes().size()) : loca.U16(glyf.bytes().size() / 2); };
    for (const Bytes& glyph : glyphs) {
        offset();
        glyf.Append(glyph);
        if (!longLoca && glyph.size() % 2 != 0) glyf.U8(0);
    }
    offset();
    font["glyf"] = glyf, font["loca"] = loca;
    return font;
}

// ---- Tables of the other handled kinds ----

Bytes MakeEbsc(uint32_t count, size_t records) {
    Bytes table = TableWriter().U32(0x00020000).U32(count);
    for (size_t record = 0; record < records; ++record)
        for (uint8_t at = 0; at < 28; ++at) table.push_back(0xE4 + at);
    return table;
}

Bytes MakeBloc(const std::vector<Strike>& strikes) {
    TableWriter records, arrays;
    records.U32(0x00020000).U32(static_cast<uint32_t>(strikes.size()));
    for (const Strike& s : strikes) {
        records.U32(static_cast<uint32_t>(8 + 48 * strikes.size() + arrays.bytes().size())).U32(0).U32(1).Zeros(32);
        records.U8(s.ppem).U8(s.ppem).U8(1).U8(0);
        arrays.U16(s.first).U16(s.last).U32(8).U16(s.indexFormat).U16(s.imageFormat).U32(s.imageData);
        for (uint32_t word : s.body) arrays.U32(word);
    }
    return records.Append(arrays);
}

Bytes MakeFeat(const std::vector<Feature>& features) {
    TableWriter records, settings;
    records.U32(0x00010000).U16(static_cast<uint32_t>(features.size())).U16(0).U32(0);
    for (const Feature& f : features) {
        uint32_t at = static_cast<uint32_t>(12 + 12 * features.size() + settings.bytes().size());
        records.U16(f.type).U16(static_cast<uint32_t>(f.settings.size())).U32(at).U16(f.flags).U16(f.name);
        for (auto [setting, name] : f.settings) settings.U16(setting).U16(name);
    }
    return records.Append(settings);
}

Bytes MakeGvar(uint16_t flags, const std::vector<uint16_t>& words, uint16_t glyphs) {
    TableWriter gvar;
    gvar.U32(0x00010000).U16(1).U16(0).U32(0x30).U16(glyphs).U16(flags).U32(0x40);
    for (uint16_t word : words) gvar.U16(word);
    return gvar;
}

Bytes MakeHdmx(const std::vector<DeviceRecord>& records, uint16_t version, uint32_t size) {
    TableWriter hdmx;
    hdmx.U16(version).U16(static_cast<uint32_t>(records.size())).U32(size);
    for (DeviceRecord record : records) {
        record.resize(size);
        hdmx.Append(record);
    }
    return hdmx;
}

namespace {

// The fields in 16 bits in 'mort' and in 32 in 'morx' (counts, subtable lengths and coverage), then `rest`.
Bytes Wide(MetamorphosisFormat format, std::initializer_list<size_t> fields, const Bytes& rest = {}) {
    TableWriter writer;
    for (size_t field : fields) (format == kMort ? writer.U16(field) : writer.U32(field));
    return writer.Append(rest);
}

}  // namespace

Bytes MakeMetamorphosis(MetamorphosisFormat f) {
    auto subtable = [f](uint32_t coverage, const Bytes& body) {
        return Wide(f, {body.size() + (f == kMort ? 8 : 12), coverage}, TableWriter().U32(1).Append(body));
    };
    // Feature entries are (type, setting, enable, disable) each.
    auto chain = [f](uint32_t flags, std::vector<std::array<uint32_t, 4>> entries, std::vector<Bytes> subtables) {
        TableWriter rest;
        for (auto [type, setting, enable, disable] : entries) rest.U16(type).U16(setting).U32(enable).U32(disable);
        for (const Bytes& subtable : subtables) rest.Append(subtable);
        uint32_t length = static_cast<uint32_t>(rest.bytes().size()) + (f == kMort ? 12 : 16);
        return Bytes(TableWriter().U32(flags).U32(length).Append(Wide(f, {entries.size(), subtables.size()}, rest)));
    };
    // The state table header, the class table (a lookup in 'morx'), the state array and one entry.
    Bytes ligature = Wide(kMort, {5, 14, 22, 32, 0, 0, 0, 3, 3, 0x0404, 0x0100, 0, 0, 0x0100, 0, 0x0201, 0, 0});
    if (f == kMorx)
        ligature = Wide(kMorx, {5, 28, 52, 72, 78, 78, 78}, Wide(kMort, {2, 6, 2, 12, 1, 0, 5, 3, 4, 0xFFFF, 0xFFFF, 0,
                                                                     0, 0, 0, 0, 1, 0, 0, 0, 2, 1, 0, 0, 0}));
    return TableWriter().U32(f == kMort ? 0x00010000 : 0x00020000).U32(2)
        .Append(chain(3, {{1, 0, 1, 1}}, {subtable(1, Bytes(8, 0))}))
        .Append(chain(1, {{2, 0, 2, 2}, {3, 1, 4, 4}}, {subtable(1, Bytes(4, 7)), subtable(0x2002, ligature)}));
}

Bytes MakeProp(uint16_t format, uint16_t defaultProperty, const std::vector<uint16_t>& lookup) {
    TableWriter prop;
    prop.U32(0x00020000).U16(format).U16(defaultProperty);
    for (uint16_t word : lookup) prop.U16(word);
    return prop;
}

// ---- Layout tables ----

Bytes MakeGdef() {
    return TableWriter()
        .U32(0x00010002).U16(14).U16(0).U16(24).U16(0).U16(44)  // 0: header
        .U16(1).U16(2).U16(2).U16(1).U16(3)                     // 14: ClassDef: 2 Base, 3 Mark
        .U16(6).U16(1).U16(12).U16(1).U16(1).U16(2)             // 24: LigCaretList, coverage {2}
        .U16(1).U16(4).U16(1).U16(300)                          // 36: LigGlyph, caret at 300
        .U16(1).U16(1).U32(8).U16(1).U16(2).U16(2).U16(3);      // 44: mark glyph set {2, 3}
}

Bytes Coverage(const std::vector<uint16_t>& glyphs) {
    TableWriter coverage;
    coverage.U16(1).U16(static_cast<uint32_t>(glyphs.size()));
    for (uint16_t glyph : glyphs) coverage.U16(glyph);
    return coverage;
}

// ClassDef format 1 from glyph `start` on.
Bytes ClassDef(uint16_t start, const std::vector<uint16_t>& classes) {
    TableWriter classDef;
    classDef.U16(1).U16(start).U16(static_cast<uint32_t>(classes.size()));
    for (uint16_t value : classes) classDef.U16(value);
    return classDef;
}

// A 'GSUB' or 'GPOS' with script 'latn' whose default language system lists every
// feature, in order.
Bytes LayoutTable(const std::vector<std::pair<std::string, std::vector<uint16_t>>>& features,
                  const std::vector<TestLookup>& lookups) {
    TableWriter langSys;
    langSys.U16(0).U16(0xFFFF).U16(static_cast<uint32_t>(features.size()));
    for (size_t i = 0; i < features.size(); ++i) langSys.U16(static_cast<uint32_t>(i));
    Bytes scriptList = Joined(TableWriter().U16(1).Tag("latn").U16(8).U16(4).U16(0), langSys);

    TableWriter featureList;
    featureList.U16(static_cast<uint32_t>(features.size()));
    Bytes featureTables;
    for (const auto& [tag, indices] : features) {
        featureList.Tag(tag.c_str()).U16(static_cast<uint32_t>(2 + 6 * features.size() + featureTables.size()));
        TableWriter feature;
        feature.U16(0).U16(static_cast<uint32_t>(indices.size()));
        for (uint16_t index : indices) feature.U16(index);
        featureTables = Joined(featureTables, feature);
    }
    Bytes featureBytes = Joined(featureList, featureTables);

    TableWriter lookupList;
    lookupList.U16(static_cast<uint32_t>(lookups.size()));
    Bytes lookupTables;
    for (const TestLookup& lookup : lookups) {
        lookupList.U16(static_cast<uint32_t>(2 + 2 * lookups.size() + lookupTables.size()));
        TableWriter header;
        header.U16(lookup.type).U16(lookup.flag).U16(static_cast<uint32_t>(lookup.subtables.size()));
        size_t at = 6 + 2 * lookup.subtables.size();
        Bytes bodies;
        for (const Bytes& subtable : lookup.subtables) {
            header.U16(static_cast<uint32_t>(at + bodies.size()));
            bodies = Joined(bodies, subtable);
        }
        lookupTables = Joined(lookupTables, Joined(header, bodies));
    }
    Bytes lookupBytes = Joined(lookupList, lookupTables);

    uint32_t scriptAt = 10, featureAt = scriptAt + static_cast<uint32_t>(scriptList.size());
    uint32_t lookupAt = featureAt + static_cast<uint32_t>(featureBytes.size());
    Bytes table = TableWriter().U32(0x00010000).U16(scriptAt).U16(featureAt).U16(lookupAt);
    return Joined(Joined(Joined(table, scriptList), featureBytes), lookupBytes);
}

// PairPos format 1 with X advance values: (first, [(second, value)]).
Bytes PairPos1(const std::vector<std::pair<uint16_t, std::vector<std::pair<uint16_t, int16_t>>>>& sets) {
    std::vector<uint16_t> firsts;
    Bytes pairSets;
    TableWriter head;
    size_t headBytes = 10 + 2 * sets.size();
    head.U16(1).U16(0).U16(4).U16(0).U16(static_cast<uint32_t>(sets.size()));
    for (const auto& [first, pairs] : sets) {
        firsts.push_back(first);
        head.U16(static_cast<uint32_t>(headBytes + pairSets.size()));
        TableWriter pairSet;
        pairSet.U16(static_cast<uint32_t>(pairs.size()));
        for (const auto& [second, value] : pairs) pairSet.U16(second).U16(static_cast<uint16_t>(value));
        pairSets = Joined(pairSets, pairSet);
    }
    Bytes subtable = Joined(head, pairSets);
    SetU16(subtable, 2, static_cast<uint16_t>(subtable.size()));
    return Joined(subtable, Coverage(firsts));
}

// PairPos format 2 with X advance values: rows[class1][class2].
Bytes PairPos2(const std::vector<uint16_t>& covered, const Bytes& classDef1, const Bytes& classDef2,
               const std::vector<std::vector<int16_t>>& rows) {
    TableWriter head;
    head.U16(2).U16(0).U16(4).U16(0).U16(0).U16(0).U16(static_cast<uint32_t>(rows.size()))
        .U16(static_cast<uint32_t>(rows[0].size()));
    for (const auto& row : rows)
        for (int16_t value : row) head.U16(static_cast<uint16_t>(value));
    Bytes subtable = head;
    SetU16(subtable, 2, static_cast<uint16_t>(subtable.size()));
    subtable = Joined(subtable, Coverage(covered));
    SetU16(subtable, 8, static_cast<uint16_t>(subtable.size()));
    subtable = Joined(subtable, classDef1);
    SetU16(subtable, 10, static_cast<uint16_t>(subtable.size()));
    return Joined(subtable, classDef2);
}

// SingleSubst format 2.
Bytes SingleSubst(const std::vector<uint16_t>& from, const std::vector<uint16_t>& to) {
    TableWriter head;
    head.U16(2).U16(static_cast<uint32_t>(6 + 2 * to.size())).U16(static_cast<uint32_t>(to.size()));
    for (uint16_t glyph : to) head.U16(glyph);
    return Joined(head, Coverage(from));
}

// LigatureSubst with one ligature set of one ligature: components -> ligature.
Bytes LigatureSubst(const std::vector<uint16_t>& components, uint16_t ligature) {
    TableWriter table;
    table.U16(1).U16(0).U16(1).U16(8);                 // coverage patched below, one set at 8
    table.U16(1).U16(4);                               // LigatureSet: one Ligature at 4
    table.U16(ligature).U16(static_cast<uint32_t>(components.size()));
    for (size_t i = 1; i < components.size(); ++i) table.U16(components[i]);
    Bytes bytes = table;
    SetU16(bytes, 2, static_cast<uint16_t>(bytes.size()));
    return Joined(bytes, Coverage({components[0]}));
}

// ---- Variable tables ----

uint32_t Fixed(double value) { return static_cast<uint32_t>(static_cast<int32_t>(std::lround(value * 65536))); }
uint32_t F2Dot14(double value) { return static_cast<uint16_t>(static_cast<int16_t>(std::lround(value * 16384))); }

Bytes MakeFvar(const std::vector<AxisRow>& axes, const std::vector<InstanceRow>& instances) {
    TableWriter fvar;
    fvar.U32(0x00010000).U16(16).U16(2).U16(axes.size()).U16(20).U16(instances.size()).U16(6 + 4 * axes.size());
    for (const AxisRow& axis : axes)
        fvar.Tag(axis.tag).U32(Fixed(axis.minimum)).U32(Fixed(axis.defaultValue)).U32(Fixed(axis.maximum))
            .U16(0).U16(axis.nameID);
    for (const InstanceRow& instance : instances) {
        fvar.U16(instance.nameID).U16(0);
        for (double coordinate : instance.coordinates) fvar.U32(Fixed(coordinate));
        fvar.U16(instance.postScriptNameID);
    }
    return fvar;
}

Bytes MakeAvar(const std::vector<std::pair<double, double>>& pairs) {
    TableWriter avar;
    avar.U32(0x00010000).U16(0).U16(1).U16(pairs.size());
    for (auto [from, to] : pairs) avar.U16(F2Dot14(from)).U16(F2Dot14(to));
    return avar;
}

Bytes MakeStore(const std::vector<std::pair<int8_t, int8_t>>& rows) {
    TableWriter store;
    store.U16(1).U32(12).U16(1).U32(28);
    store.U16(1).U16(2).U16(0).U16(F2Dot14(1)).U16(F2Dot14(1)).U16(F2Dot14(-1)).U16(F2Dot14(-1)).U16(0);
    store.U16(rows.size()).U16(0).U16(2).U16(0).U16(1);
    for (auto [first, second] : rows) store.U8(static_cast<uint8_t>(first)).U8(static_cast<uint8_t>(second));
    return store;
}

Bytes MakeStat(uint16_t elidedNameID, double linkedValue) {
    TableWriter stat;
    stat.U32(0x00010001).U16(8).U16(2).U32(20).U16(4).U32(36).U16(elidedNameID);
    stat.Tag("wght").U16(256).U16(0).Tag("wdth").U16(257).U16(1);
    stat.U16(8).U16(20).U16(40).U16(56);
    stat.U16(1).U16(0).U16(0).U16(258).U32(Fixed(700));
    stat.U16(2).U16(0).U16(0).U16(264).U32(Fixed(900)).U32(Fixed(800)).U32(Fixed(900));
    stat.U16(3).U16(0).U16(2).U16(260).U32(Fixed(400)).U32(Fixed(linkedValue));
    stat.U16(4).U16(2).U16(0).U16(265).U16(0).U32(Fixed(700)).U16(1).U32(Fixed(75));
    return stat;
}

Bytes MakeMetricsVariations(bool vertical, int8_t item2) {
    // 'VVAR' has a fourth map offset, for vertical origins.
    uint32_t headerSize = vertical ? 24 : 20;
    Bytes store = MakeStore({{10, -10}, {0, 0}, {20, item2}, {30, -30}});
    TableWriter table;
    table.U32(0x00010000).U32(headerSize).U32(0).U32(headerSize + store.size()).U32(0);
    if (vertical) table.U32(0);
    // A delta-set index map of format 0, one-byte entries of four inner bits.
    return table.Append(store).U8(0).U8(0x00).U16(2).U8(0x01).U8(0x00);
}

Bytes MakeMvar(uint16_t xHeightItem) {
    TableWriter mvar;
    mvar.U32(0x00010000).U16(0).U16(8).U16(2).U16(28);
    mvar.Tag("cpht").U16(0).U16(0).Tag("xhgt").U16(0).U16(xHeightItem);
    return mvar.Append(MakeStore({{10, -10}, {0, 0}, {20, -20}, {30, -30}}));
}

FontTables VariableFont() {
    FontTables font = SampleFont();
    font["name"] = MakeName({{2, "Regular"}, {4, "Sample Regular"}, {256, "Weight"}, {257, "Width"},
                             {258, "Bold"}, {259, "Sample-Bold"}, {260, "Regular"}, {261, "Sample-Regular"},
                             {262, "Condensed"}, {263, "Sample-Condensed"}, {264, "Black"},
                             {265, "Bold Condensed"}});
    font["fvar"] = MakeFvar({{"wght", 100, 400, 900, 256}}, {{260, {400}, 261}, {258, {700}, 259}});
    return font;
}

FontTables EveryTableFont() {
    // Glyph A: one contour, (10, 20) (30, 40) on the curve, with PUSHB[1] 5 and SRP0.
    const Bytes side = {0, 1, 0, 10, 0, 20, 0, 30, 0, 40, 0, 1, 0, 3, 0xB0, 5, 0x10, 1, 1, 0, 10, 0, 20, 0, 20, 0, 20};
    FontTables font = GlyphFont({{}, {}, side, {}});
    font["EBSC"] = MakeEbsc(2, 2);
    font["bdat"] = TableWriter().U32(0x00020000).Append(Bytes(300, 1));
    font["bhed"] = MakeHead();
    font["bloc"] = MakeBloc({{12, 1, 1, 1, 1, 4, {0, 300}}});  // glyph 1's 300 bytes
    // Codes 'A' and 'B' in a Macintosh format 6 subtable.
    font["cmap"] = TableWriter().U16(0).U16(1).U16(1).U16(0).U32(12).U16(6).U16(14).U16(0).U16('A').U16(2)
        .U16(2).U16(3);
    font["cvt "] = TableWriter().U16(1).U16(0xFFF4).U16(300);
    font["fvar"] = MakeFvar({{"wght", 100, 400, 900, 256}}, {{260, {400}, 261}, {258, {700}, 259}});
    font["feat"] = MakeFeat({{1, 0x8000, 1, {{0, 2}, {2, 4}}}, {3, 0xC000, 2, {{0, 1}}}, {3, 0x4000, 2, {{0, 1}}}});
    font["gvar"] = MakeGvar(0, {0xAAAA, 0xBBBB, 1, 2, 3, 0x8002, 0x0C, 8, 0x8001, 0, 0, 6, 0x2003});
    font["hdmx"] = MakeHdmx({{12, 9, 6, 3, 9, 9}, {16, 12, 8, 4, 12, 12}});
    font["hsty"] = TableWriter().U32(0x00010000).U16(0).U16(40).U16(20).Zeros(12);
    font["GDEF"] = MakeGdef();
    font["GPOS"] = LayoutTable({{"kern", {0}}}, {{2, {PairPos1({{1, {{2, -40}}}, {2, {{1, 15}}}})}}});
    font["GSUB"] = LayoutTable({{"liga", {0}}, {"smcp", {1}}}, {{4, {LigatureSubst({1, 2}, 3)}}, {1, {SingleSubst({1}, {2})}}});
    font["HVAR"] = MakeMetricsVariations(false, -20);
    font["MVAR"] = MakeMvar(1);
    font["STAT"] = MakeStat(2, 700);
    font["VVAR"] = MakeMetricsVariations(true, -20);
    font["avar"] = MakeAvar({{-1, -1}, {0, 0}, {0.5, 0.625}, {1, 1}});
    // A 16-bit version 'kern' of one format 0 subtable: (2, 3) -80.
    font["kern"] = TableWriter().U16(0).U16(1).U16(0).U16(26).U16(0x0001).U16(2).U16(12).U16(1).U16(0)
        .U16(2).U16(3).U16(0xFFB0).U16(3).U16(2).U16(0);
    font["mort"] = MakeMetamorphosis(kMort);
    font["morx"] = MakeMetamorphosis(kMorx);
    font["prop"] = MakeProp(1, 0, {0, 1, 1, 1, 2, 0x0101});
    font["vhea"] = MakeHhea(2);
    font["vmtx"] = MakeHmtx({{1000, 10}, {1000, 20}}, {30, 40});
    // Outlines of both kinds in one font: each outline handler reads only its own
    // table and asks the font for the glyph count, names and metrics, and FreeType
    // is handed the 'CFF ' table bare (a 'CFF2' with only those side tables), never
    // the whole font; so each table gets the account it would get in a font of its
    // own kind, which is all the damage rounds look at. Both hold .notdef and three
    // glyphs or fewer, as this font does.
    font["CFF "] = TestFontTables("cff-original.otf")["CFF "];
    font["CFF2"] = TestFontTables("cff2-original.otf")["CFF2"];
    std::ranges::sort(font.tables);
    return font;
}

// ---- Files and processes ----

TempDir::TempDir() : fPath((std::filesystem::temp_directory_path() / "vellcmp-test-XXXXXX").string()) {
    if (::mkdtemp(fPath.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
}

TempDir::~TempDir() {
    std::error_code ignored;  // a test's files are left behind rather than failing it
    std::filesystem::remove_all(fPath, ignored);
}

std::string TempDir::Write(const std::string& name, const Bytes& bytes) const {
    std::ofstream(Path(name), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return Path(name);
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

namespace {

RunResult Run(const std::string& binary, const std::vector<std::string>& arguments) {
    TempDir outputs;
    std::string outPath = outputs.Path("stdout"), errPath = outputs.Path("stderr");
    pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 1);
        ::dup2(::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
        std::vector<char*> argv{const_cast<char*>(binary.c_str())};
        for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        ::execv(binary.c_str(), argv.data());
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), ReadFile(outPath), ReadFile(errPath)};
}

}  // namespace

RunResult RunVellcmp(const std::vector<std::string>& arguments) { return Run(VELLCMP_BINARY, arguments); }
RunResult RunVelldump(const std::vector<std::string>& arguments) { return Run(VELLDUMP_BINARY, arguments); }
