#include "tables/post.h"

#include <algorithm>
#include <string>

#include "VellCmpErrors.h"
#include "framework/VellGlyphs.h"
#include "framework/VellTables.h"

namespace {

// The 'post' header. The italic angle is a signed 16.16 value but prints as two
// unsigned halves, like a version number, so -12.5 reads 65523.32768; reports
// have always shown it that way. isFixedPitch compares all 32 bits, so 1 against
// 2 is a change even though both print TRUE.
constexpr FieldRow kPostHeaderRows[] = {
    {0, FieldKind::Version, "Format", "version"},
    {4, FieldKind::FixedAsVersion, "Italic angle", "italicAngle"},
    {8, FieldKind::Int16, "Underline position", "underlinePosition"},
    {10, FieldKind::UInt16, "Underline thickness", "underlineThickness"},
    {12, FieldKind::Flag32, "Is monospaced", "isFixedPitch"},
    {16, FieldKind::Int32, "Minimum memory, type 42", "minMemType42"},
    {20, FieldKind::Int32, "Maximum memory, type 42", "maxMemType42"},
    {24, FieldKind::Int32, "Minimum memory, type 1", "minMemType1"},
    {28, FieldKind::Int32, "Maximum memory, type 1", "maxMemType1"},
};

uint32_t CountGlyphs(VellFontRef font) {
    ErrorRecord record;
    ClearUSN(&record);
    uint32_t count = VellCountFontGlyphs(font, &record);
    ThrowIfVellError(record);
    return count;
}

// The glyph's PostScript name as this 'post' table gives it; a table without
// names (format 3) gives an empty one. Names are C strings: a NUL byte inside a
// format 2 Pascal string ends the name.
std::string PostScriptName(const VellHandle& post, uint32_t glyph) {
    std::string name;
    int32_t status = VellFindPSGlyphNameFromTable(post, glyph, &name);
    if (status != 0) throw TVellCmpVellException(status);
    name.erase(std::find(name.begin(), name.end(), '\0'), name.end());
    return name;
}

// The dump shows the format and the italic angle as the 16.16 decimals they are.
constexpr auto kPostDumpRows = RevisedRows<std::size(kPostHeaderRows)>(
    kPostHeaderRows, {{0, FieldKind::Fixed, "Format"}, {4, FieldKind::Fixed, "Italic angle"}});

// Formats 1 and 2 name glyphs; format 3 names none, and 2.5 is long deprecated.
bool NamesGlyphs(VellView post) { return post.u32(0) == 0x00010000 || post.u32(0) == 0x00020000; }

}  // namespace

int32_t TPOSTTableDumper::DumpTableContents() {
    VellView table = GetTableView();
    DumpFieldRows(1, kPostDumpRows, table);
    if (!NamesGlyphs(table)) return 0;
    for (uint32_t glyph = 0, count = GetContext()->GlyphCount(); glyph < count; ++glyph) {
        PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, true);
        PrintStringField(2, "Name", PostScriptName(GetTableHandle(), glyph));
    }
    return 0;
}

int32_t TPOSTTableComparator::DumpTableDeltas() {
    // The glyph counts come from the fonts ('maxp'), not from the 'post' tables,
    // which may name fewer glyphs or none.
    uint32_t originalGlyphs = CountGlyphs(GetOriginalFont());
    uint32_t modifiedGlyphs = CountGlyphs(GetModifiedFont());
    uint32_t commonGlyphs = std::min(originalGlyphs, modifiedGlyphs);
    uint32_t allGlyphs = std::max(originalGlyphs, modifiedGlyphs);

    CompareFieldRows(1, kPostHeaderRows, GetTableView(), GetOriginalTableView());

    for (uint32_t glyph = 0; glyph < commonGlyphs; ++glyph) {
        std::string originalName = PostScriptName(GetOriginalTableHandle(), glyph);
        std::string modifiedName = PostScriptName(GetTableHandle(), glyph);
        if (originalName == modifiedName) continue;
        PathScope names(*this, "glyphNames");
        if (!ShowsDifference(DifferenceKind::Changed, glyph, [&](JsonWriter& writer) {
                writer.Key("original");
                WriteText(writer, originalName);
                writer.Key("modified");
                WriteText(writer, modifiedName);
            }))
            continue;
        PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, true);
        PrintLine("\t\tname (mod ):\t" + modifiedName, true);
        PrintLine("\t\tname (orig):\t" + originalName, true);
    }

    if (originalGlyphs > modifiedGlyphs) PrintLine("\t### Deleted glyphs:", true);
    if (modifiedGlyphs > originalGlyphs) PrintLine("\t### Added glyphs:", true);
    DifferenceKind kind = originalGlyphs > modifiedGlyphs ? DifferenceKind::Deleted : DifferenceKind::Added;
    for (uint32_t glyph = commonGlyphs; glyph < allGlyphs; ++glyph) {
        const VellHandle& post = glyph < originalGlyphs ? GetOriginalTableHandle() : GetTableHandle();
        std::string name = PostScriptName(post, glyph);
        PathScope names(*this, "glyphNames");
        if (!ShowsDifference(kind, glyph, [&](JsonWriter& writer) {
                writer.Key("value");
                WriteText(writer, name);
            }))
            continue;
        PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, false);
        PrintLine("\t" + name, true);
    }
    return 0;
}
