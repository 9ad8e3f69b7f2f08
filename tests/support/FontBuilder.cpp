#include "support/FontBuilder.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "framework/VellGlyphs.h"

TableWriter& TableWriter::U8(uint32_t v) {
    fBytes.push_back(static_cast<uint8_t>(v));
    return *this;
}
TableWriter& TableWriter::U16(uint32_t v) { return U8(v >> 8).U8(v); }
TableWriter& TableWriter::U32(uint32_t v) { return U16(v >> 16).U16(v); }
TableWriter& TableWriter::U64(uint64_t v) { return U32(static_cast<uint32_t>(v >> 32)).U32(static_cast<uint32_t>(v)); }
TableWriter& TableWriter::Tag(const char* tag) {
    for (int i = 0; i < 4; ++i) U8(static_cast<uint8_t>(tag[i]));
    return *this;
}
TableWriter& TableWriter::Zeros(size_t count) {
    fBytes.insert(fBytes.end(), count, 0);
    return *this;
}
TableWriter& TableWriter::Text(const std::string& text) {
    fBytes.insert(fBytes.end(), text.begin(), text.end());
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
void SetU64(Bytes& bytes, size_t offset, uint64_t v) {
    SetU32(bytes, offset, static_cast<uint32_t>(v >> 32));
    SetU32(bytes, offset + 4, static_cast<uint32_t>(v));
}

Bytes& FontTables::operator[](const std::string& tag) {
    for (auto& [name, bytes] : tables)
        if (name == tag) return bytes;
    tables.emplace_back(tag, Bytes{});
    return tables.back().second;
}
void FontTables::Remove(const std::string& tag) {
    std::erase_if(tables, [&](const auto& entry) { return entry.first == tag; });
}
bool FontTables::Has(const std::string& tag) const {
    for (const auto& entry : tables)
        if (entry.first == tag) return true;
    return false;
}

namespace {

// The offset table and directory of one font whose tables are appended to *data
// and will lie at file offset dataStart on.
Bytes Directory(const FontTables& font, size_t dataStart, Bytes* data) {
    TableWriter header;
    uint16_t count = static_cast<uint16_t>(font.tables.size());
    header.U32(0x00010000).U16(count).U16(0).U16(0).U16(0);
    size_t at = dataStart, start = data->size();
    for (const auto& [tag, bytes] : font.tables) {
        header.Tag(tag.c_str()).U32(0).U32(static_cast<uint32_t>(at)).U32(static_cast<uint32_t>(bytes.size()));
        data->insert(data->end(), bytes.begin(), bytes.end());
        data->resize((data->size() + 3) & ~size_t{3}, 0);
        at = dataStart + (data->size() - start);
    }
    return header;
}

size_t DirectorySize(const FontTables& font) { return 12 + 16 * font.tables.size(); }

}  // namespace

Bytes BuildSfnt(const FontTables& font) {
    Bytes data;
    Bytes out = Directory(font, DirectorySize(font), &data);
    out.insert(out.end(), data.begin(), data.end());
    return out;
}

Bytes BuildCollection(const std::vector<FontTables>& fonts) {
    TableWriter header;
    header.Tag("ttcf").U32(0x00010000).U32(static_cast<uint32_t>(fonts.size()));
    size_t at = 12 + 4 * fonts.size();
    std::vector<size_t> starts;
    for (const auto& font : fonts) {
        starts.push_back(at);
        at += DirectorySize(font);
    }
    for (size_t start : starts) header.U32(static_cast<uint32_t>(start));
    Bytes out = header;
    Bytes data;
    std::vector<Bytes> directories;
    for (const auto& font : fonts) directories.push_back(Directory(font, at + data.size(), &data));
    for (const auto& directory : directories) out.insert(out.end(), directory.begin(), directory.end());
    out.insert(out.end(), data.begin(), data.end());
    return out;
}

Bytes BuildResourceFork(const std::vector<FontTables>& fonts) {
    Bytes data;
    std::vector<uint32_t> offsets;
    for (const auto& font : fonts) {
        Bytes sfnt = BuildSfnt(font);
        offsets.push_back(static_cast<uint32_t>(data.size()));
        TableWriter length;
        length.U32(static_cast<uint32_t>(sfnt.size()));
        data.insert(data.end(), length.bytes().begin(), length.bytes().end());
        data.insert(data.end(), sfnt.begin(), sfnt.end());
    }
    const uint32_t dataOffset = 256;
    TableWriter map;
    map.Zeros(16).U32(0).U16(0).U16(0).U16(28).U16(0);  // header copy, next map, file ref, attributes, type list, names
    map.U16(0).Tag("sfnt").U16(static_cast<uint32_t>(fonts.size() - 1)).U16(10);  // one type; references at 2 + 8
    for (size_t i = 0; i < fonts.size(); ++i)
        map.U16(static_cast<uint32_t>(128 + i)).U16(0xFFFF).U8(0).U8(offsets[i] >> 16).U16(offsets[i] & 0xFFFF).U32(0);
    Bytes mapBytes = map;
    uint32_t mapOffset = dataOffset + static_cast<uint32_t>(data.size());
    TableWriter header;
    header.U32(dataOffset).U32(mapOffset).U32(static_cast<uint32_t>(data.size())).U32(static_cast<uint32_t>(mapBytes.size()));
    Bytes out = header;
    out.resize(dataOffset, 0);
    out.insert(out.end(), data.begin(), data.end());
    out.insert(out.end(), mapBytes.begin(), mapBytes.end());
    return out;
}

// ---- Tables ----

Bytes MakeHead() {
    TableWriter head;
    head.U32(0x00010000).U32(0x00010000).U32(0x12345678).U32(0x5F0F3CF5);
    head.U16(0x000B).U16(2048);
    head.U64(3140000000ULL).U64(3140000000ULL);  // created, modified: 2003-07-02
    head.U16(static_cast<uint16_t>(-100)).U16(static_cast<uint16_t>(-200)).U16(1000).U16(1800);
    head.U16(0).U16(9).U16(2).U16(0).U16(0);
    return head;
}

Bytes MakeHhea(uint16_t numberOfHMetrics) {
    TableWriter hhea;
    hhea.U32(0x00010000).U16(1900).U16(static_cast<uint16_t>(-500)).U16(0).U16(1200);
    hhea.U16(static_cast<uint16_t>(-100)).U16(static_cast<uint16_t>(-50)).U16(1100);
    hhea.U16(1).U16(0).U16(0).Zeros(8).U16(0).U16(numberOfHMetrics);
    return hhea;
}

Bytes MakeMaxp(uint16_t numGlyphs) {
    TableWriter maxp;
    maxp.U32(0x00010000).U16(numGlyphs).U16(40).U16(4).U16(0).U16(0).U16(2).U16(0).U16(16).U16(8);
    maxp.U16(0).U16(64).U16(100).U16(0).U16(0);
    return maxp;
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
        uint32_t index = 0;
        while (index < 258 && name != kVellStandardGlyphNames[index]) ++index;
        if (index == 258) {
            index = 258 + static_cast<uint32_t>(custom.size());
            custom.push_back(name);
        }
        post.U16(index);
    }
    for (const std::string& name : custom) post.U8(static_cast<uint32_t>(name.size())).Text(name);
    return post;
}

Bytes Utf16BE(const std::string& ascii) {
    Bytes out;
    for (char c : ascii) {
        out.push_back(0);
        out.push_back(static_cast<uint8_t>(c));
    }
    return out;
}

Bytes MakeNameRecords(const std::vector<NameEntry>& names) {
    TableWriter name;
    name.U16(0).U16(static_cast<uint32_t>(names.size())).U16(static_cast<uint32_t>(6 + 12 * names.size()));
    Bytes storage;
    for (const NameEntry& entry : names) {
        name.U16(entry.platformID).U16(entry.encodingID).U16(entry.languageID).U16(entry.nameID);
        name.U16(static_cast<uint32_t>(entry.text.size())).U16(static_cast<uint32_t>(storage.size()));
        storage.insert(storage.end(), entry.text.begin(), entry.text.end());
    }
    Bytes out = name;
    out.insert(out.end(), storage.begin(), storage.end());
    return out;
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

// ---- Files and processes ----

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vellcmp-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    fPath = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(fPath, ignored);
}

std::string TempDir::Write(const std::string& name, const Bytes& bytes) const {
    std::string path = Path(name);
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

RunResult Run(const std::string& binary, const std::vector<std::string>& arguments) {
    TempDir outputs;
    std::string outPath = outputs.Path("stdout"), errPath = outputs.Path("stderr");
    pid_t child = ::fork();
    if (child == 0) {
        int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        int err = ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ::dup2(out, 1);
        ::dup2(err, 2);
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(binary.c_str()));
        for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        ::execv(binary.c_str(), argv.data());
        ::_exit(127);
    }
    RunResult result;
    int status = 0;
    ::waitpid(child, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.out = ReadFile(outPath);
    result.err = ReadFile(errPath);
    return result;
}

RunResult RunVellcmp(const std::vector<std::string>& arguments) { return Run(VELLCMP_BINARY, arguments); }
RunResult RunVelldump(const std::vector<std::string>& arguments) { return Run(VELLDUMP_BINARY, arguments); }
