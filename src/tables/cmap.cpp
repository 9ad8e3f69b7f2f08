#include "tables/cmap.h"

#include <algorithm>
#include <initializer_list>

#include "VellCmpErrors.h"
#include "framework/VellEncodings.h"
#include "framework/VellGlyphs.h"
#include "framework/VellIdentifiers.h"

namespace {

// An encoding as the framework names it: platform, script and language, each one
// above its sfnt ID.
struct Encoding {
    int32_t platform, script, language;
};

// Codes print as Unicode values on the Unicode platform (1) and in the Microsoft
// platform's (4) Unicode BMP (2) and UCS-4 (11) encodings.
bool IsUnicode(const Encoding& encoding) {
    return encoding.platform == 1 || (encoding.platform == 4 && (encoding.script == 2 || encoding.script == 11));
}

uint32_t CountEncodings(VellFontRef font) {
    ErrorRecord record;
    uint32_t count = VellCountFontEncodings(font, &record);
    ThrowIfVellError(record);
    return count;
}

Encoding GetEncoding(VellFontRef font, uint32_t index) {
    ErrorRecord record;
    Encoding encoding;
    encoding.platform = VellGetFontEncoding(font, index, &encoding.script, &encoding.language, &record);
    ThrowIfVellError(record);
    return encoding;
}

// The index of the font's first encoding with the same identifiers, or 0.
uint32_t FindEncoding(VellFontRef font, const Encoding& encoding) {
    ErrorRecord record;
    uint32_t index = VellFindFontEncoding(font, encoding.platform, encoding.script, encoding.language, &record);
    ThrowIfVellError(record);
    return index;
}

bool HasEncodingMissingFrom(VellFontRef font, VellFontRef other) {
    for (uint32_t index = 1, count = CountEncodings(font); index <= count; ++index)
        if (FindEncoding(other, GetEncoding(font, index)) == 0) return true;
    return false;
}

VellCGArray MakeArray(const VellHandle& cmap, uint32_t index) {
    ErrorRecord record;
    uint16_t format;
    VellCGArray mappings = VellMakeCGArrayFromCMAPTable(cmap, index, &format, &record);
    ThrowIfVellError(record);
    return mappings;
}

// Walks `from` in code order and calls found(mapping, match) with its code's
// mapping in `in`, or null. Both arrays are sorted by code with one entry per
// code, so the walk goes through both in step.
template <typename Found>
void MatchCodes(const VellCGArray& from, const VellCGArray& in, Found found) {
    auto other = in.begin();
    for (const VellCGPair& mapping : from) {
        while (other != in.end() && other->code < mapping.code) ++other;
        found(mapping, other != in.end() && other->code == mapping.code ? &*other : nullptr);
    }
}

bool SameMappings(const VellCGArray& a, const VellCGArray& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const VellCGPair& x, const VellCGPair& y) {
        return x.code == y.code && x.glyph == y.glyph;
    });
}

// Each label keeps two trailing blanks before its colon, as reports always have.
void PrintEncodingHeading(TTableDumper& dumper, const Encoding& encoding) {
    ErrorRecord record;
    std::string text = VellPlatformToString(encoding.platform, &record);
    ThrowIfVellError(record);
    dumper.PrintStringField(0, "Platform:  ", text);
    text = VellScriptToString(encoding.platform, encoding.script, &record);
    ThrowIfVellError(record);
    dumper.PrintStringField(0, "Script:  ", text);
    text = VellLanguageToString(encoding.platform, encoding.script, encoding.language, &record);
    ThrowIfVellError(record);
    dumper.PrintStringField(0, "Language:  ", text);
}

// "\t<code> ==> <glyph>", or for a remapped code "\t<code> ==> <original glyph> ==>
// <modified glyph>". The code and glyph fields leave the line open and the mapping
// ends it; with -p the last glyph field has already ended it, so an empty line follows.
void PrintMapping(TTableDumper& dumper, uint32_t code, std::initializer_list<uint16_t> glyphs, bool unicode) {
    dumper.PrintLine("\t", false);
    dumper.PrintUnicodeValue(0, nullptr, code, unicode, false);
    size_t remaining = glyphs.size();
    for (uint16_t glyph : glyphs) {
        dumper.PrintLine(" ==> ", false);
        dumper.PrintGlyphField(0, nullptr, glyph, false, --remaining == 0);
    }
    dumper.PrintLine("\n", false);
}

// An encoding's place in a difference's path: its platform ID, encoding ID and
// language, as the subtable stores them.
class EncodingSteps {
public:
    EncodingSteps(TTableDumper& dumper, const Encoding& encoding)
        : fPlatform(dumper, encoding.platform - 1),
          fEncoding(dumper, encoding.script - 1),
          fLanguage(dumper, encoding.language - 1) {}

private:
    TTableDumper::PathScope fPlatform, fEncoding, fLanguage;
};

// The encodings of `font` that `other` lacks, framed only when there is one;
// each is an entry that the modified font added or deleted, valued by its names.
void DumpLoneEncodings(TTableDumper& dumper, VellFontRef font, VellFontRef other, DifferenceKind kind,
                       const char* heading, const char* footer) {
    if (!HasEncodingMissingFrom(font, other)) return;
    dumper.PrintLine(heading, false);
    for (uint32_t index = 1, count = CountEncodings(font); index <= count; ++index) {
        Encoding encoding = GetEncoding(font, index);
        if (FindEncoding(other, encoding) != 0) continue;
        TTableDumper::PathScope platform(dumper, encoding.platform - 1), script(dumper, encoding.script - 1);
        if (dumper.ShowsDifference(kind, encoding.language - 1, [&](JsonWriter& writer) {
                ErrorRecord record;
                writer.Key("value");
                writer.StartObject();
                writer.Key("platform");
                WriteText(writer, VellPlatformToString(encoding.platform, &record));
                writer.Key("encoding");
                WriteText(writer, VellScriptToString(encoding.platform, encoding.script, &record));
                writer.Key("language");
                WriteText(writer, VellLanguageToString(encoding.platform, encoding.script, encoding.language, &record));
                writer.EndObject();
                ThrowIfVellError(record);
            }))
            PrintEncodingHeading(dumper, encoding);
    }
    dumper.PrintLine(footer, false);
}

// A mapping's glyph as the value of its record.
auto GlyphValue(const char* member, uint16_t glyph) {
    return [member, glyph](JsonWriter& writer) {
        writer.Key(member);
        writer.Uint(glyph);
    };
}

// Glyph names come from the dumper's font, the modified one, on both sides.
void DumpChangedMappings(TTableDumper& dumper, const VellCGArray& original, const VellCGArray& modified,
                         bool unicode) {
    dumper.PrintLine("\t### Added mappings (in modified font and not original font):\n", true);
    MatchCodes(modified, original, [&](const VellCGPair& mapping, const VellCGPair* before) {
        if (before == nullptr &&
            dumper.ShowsDifference(DifferenceKind::Added, mapping.code, GlyphValue("value", mapping.glyph)))
            PrintMapping(dumper, mapping.code, {mapping.glyph}, unicode);
    });
    dumper.PrintLine("\n\t### Deleted mappings (in original font but not in modified font):\n", true);
    MatchCodes(original, modified, [&](const VellCGPair& mapping, const VellCGPair* now) {
        if (now == nullptr &&
            dumper.ShowsDifference(DifferenceKind::Deleted, mapping.code, GlyphValue("value", mapping.glyph)))
            PrintMapping(dumper, mapping.code, {mapping.glyph}, unicode);
    });
    dumper.PrintLine("\n\t### Changed mappings (char code ==> original font glyph ==> modified font glyph):\n", true);
    MatchCodes(original, modified, [&](const VellCGPair& mapping, const VellCGPair* now) {
        if (now == nullptr || now->glyph == mapping.glyph) return;
        if (dumper.ShowsDifference(DifferenceKind::Changed, mapping.code, [&](JsonWriter& writer) {
                GlyphValue("original", mapping.glyph)(writer);
                GlyphValue("modified", now->glyph)(writer);
            }))
            PrintMapping(dumper, mapping.code, {mapping.glyph, now->glyph}, unicode);
    });
}

// A character code as the listing shows it: "U+0041" (with -u, its name too) for
// a Unicode encoding, else "0x41".
std::string CodeText(uint32_t code, bool unicode) {
    std::string text = unicode ? "U+" : "0x";
    AppendHex(text, code, unicode ? 4 : 2);
    if (!unicode || !gShowUnicodeNames) return text;
    ErrorRecord record;
    std::string name = VellGetUnicodeScalarName(code, &record);
    ThrowIfVellError(record);
    return text + " " + name;
}

}  // namespace

int32_t TCMAPTableDumper::DumpTableContents() {
    VellFontRef font = GetFont();
    for (uint32_t index = 1, count = CountEncodings(font); index <= count; ++index) {
        Encoding encoding = GetEncoding(font, index);
        ErrorRecord record;
        PrintInt32Field(0, "Encoding", static_cast<int32_t>(index), false, true);
        PrintStringField(1, "Platform", VellPlatformToString(encoding.platform, &record));
        PrintStringField(1, "Script", VellScriptToString(encoding.platform, encoding.script, &record));
        PrintStringField(1, "Language",
                         VellLanguageToString(encoding.platform, encoding.script, encoding.language, &record));
        ThrowIfVellError(record);
        uint16_t format = 0;
        VellCGArray mappings = VellMakeCGArrayFromCMAPTable(GetTableHandle(), index, &format, &record);
        ThrowIfVellError(record);
        PrintUInt16Field(1, "Format", format, false);
        bool unicode = IsUnicode(encoding);
        for (const VellCGPair& mapping : mappings)
            PrintLine("\t\t" + CodeText(mapping.code, unicode) + " ==> " + GlyphText(mapping.glyph), true);
    }
    return 0;
}

// Encodings are matched by platform, script and language; one present in only
// one font is listed by name and its mappings are not compared.
int32_t TCMAPTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellFontRef original = GetOriginalFont(), modified = GetModifiedFont();
    DumpLoneEncodings(*this, modified, original, DifferenceKind::Added, "### Added cmaps:\n\n",
                      "\n### End added cmaps:\n\n");
    DumpLoneEncodings(*this, original, modified, DifferenceKind::Deleted, "### Deleted cmaps:\n\n",
                      "\n### End deleted cmaps:\n\n");

    PrintLine("### Changed cmaps:\n\n", false);
    for (uint32_t index = 1, count = CountEncodings(original); index <= count; ++index) {
        Encoding encoding = GetEncoding(original, index);
        uint32_t match = FindEncoding(modified, encoding);
        if (match == 0) continue;
        VellCGArray originalMappings = MakeArray(GetOriginalTableHandle(), index);
        VellCGArray modifiedMappings = MakeArray(GetTableHandle(), match);
        if (SameMappings(originalMappings, modifiedMappings)) continue;
        EncodingSteps steps(*this, encoding);
        if (ScopeIgnored()) continue;
        PrintEncodingHeading(*this, encoding);
        DumpChangedMappings(*this, originalMappings, modifiedMappings, IsUnicode(encoding));
        PrintLine("\n", false);
    }
    PrintLine("\n### End changed cmaps:\n\n", false);
    return 0;
}
