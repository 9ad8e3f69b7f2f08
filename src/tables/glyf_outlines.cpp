#include "tables/glyf_outlines.h"

#include <algorithm>
#include <array>

#include "VellCmpErrors.h"
#include "comparators/TOutlineDeltas.h"
#include "framework/VellGlyphData.h"
#include "framework/VellInstructions.h"
#include "framework/VellOutlines.h"

namespace {

constexpr uint16_t kArgsAreXYValues = 0x0002;
// At most this many differing instructions are listed per glyph.
constexpr size_t kListedInstructions = 24;

VellGlyphLocations FindGlyphs(VellFontRef font) {
    ErrorRecord record;
    VellGlyphLocations locations = VellFindGlyphLocations(font, &record);
    ThrowIfVellError(record);
    return locations;
}

// A glyph's bytes; a range that 'loca' gets wrong reads as no outline.
VellView GlyphBytes(const VellGlyphLocations& locations, uint32_t glyph) {
    ErrorRecord record;
    VellView bytes = VellGetTTGlyphBytes(locations, glyph, &record);
    return record.code == kVellNoErr ? bytes : VellView();
}

const char* GlyphKind(const VellTrueTypeGlyph& glyph) {
    return glyph.contourCount > 0 ? "simple" : glyph.contourCount < 0 ? "composite" : "empty";
}

int KindOf(const VellTrueTypeGlyph& glyph) { return glyph.contourCount > 0 ? 1 : glyph.contourCount < 0 ? -1 : 0; }

std::string BoundsText(const VellTrueTypeGlyph& glyph) {
    std::string text;
    for (int k = 0; k < 4; ++k) {
        if (k > 0) text.push_back(' ');
        AppendDecimal(text, glyph.bounds[k]);
    }
    return text;
}

// A component as it is drawn: its glyph, its offset (or the points it joins),
// its matrix when it is not the identity, and its placement flags when any is set.
std::string ComponentText(const VellGlyphComponent& component) {
    std::string text = "glyph " + std::to_string(component.glyph);
    text.append(component.flags & kArgsAreXYValues ? ", offset " : ", points ");
    AppendDecimal(text, component.argument1);
    text.push_back(' ');
    AppendDecimal(text, component.argument2);
    if (component.matrix[0] != 0x4000 || component.matrix[1] != 0 || component.matrix[2] != 0 ||
        component.matrix[3] != 0x4000) {
        text.append(", matrix");
        for (int32_t value : component.matrix) text.append(VellFormat(" %.6g", value / 16384.0));
    }
    if ((component.flags & ~kArgsAreXYValues) != 0) text.append(VellFormat(", flags 0x%04X", component.flags));
    return text;
}

std::vector<std::string> Disassemble(VellView code) {
    std::vector<std::string> lines;
    ErrorRecord record;
    uint32_t length = static_cast<uint32_t>(code.size());
    uint32_t count = VellCountInstructions(code, length, &record);
    std::array<uint8_t, kVellInstructionTextSize> text{};
    size_t at = 0;
    for (uint32_t k = 0; k < count && at < length && record.code == kVellNoErr; ++k) {
        at += VellDecodeInstructions(code.sub(at), static_cast<uint32_t>(length - at), text, &record);
        lines.emplace_back(reinterpret_cast<const char*>(text.data()) + 1, text[0]);
    }
    return lines;
}

bool SameGlyph(const VellTrueTypeGlyph& a, const VellTrueTypeGlyph& b) {
    return KindOf(a) == KindOf(b) && std::equal(a.bounds, a.bounds + 4, b.bounds) && a.outline == b.outline &&
           a.components == b.components && a.instructions == b.instructions;
}

// The instructions that differ: those between the longest common beginning and
// the longest common end of the two programs.
void PrintInstructionDeltas(TTableDumper& out, int indent, VellView modified, VellView original) {
    std::vector<std::string> mod = Disassemble(modified), orig = Disassemble(original);
    size_t prefix = 0;
    while (prefix < mod.size() && prefix < orig.size() && mod[prefix] == orig[prefix]) ++prefix;
    size_t suffix = 0;
    while (suffix < mod.size() - prefix && suffix < orig.size() - prefix &&
           mod[mod.size() - 1 - suffix] == orig[orig.size() - 1 - suffix])
        ++suffix;
    size_t rows = std::max(mod.size(), orig.size()) - prefix - suffix;
    for (size_t k = 0; k < rows && k < kListedInstructions; ++k) {
        size_t index = prefix + k;
        std::string label = "Instruction " + std::to_string(index);
        out.PrintStringField(indent, ModLabel(label), index < mod.size() - suffix ? mod[index] : "(none)");
        out.PrintStringField(indent, OrigLabel(label), index < orig.size() - suffix ? orig[index] : "(none)");
    }
    if (rows > kListedInstructions)
        out.PrintUInt32Field(indent, "Differing instructions not listed", static_cast<uint32_t>(rows - kListedInstructions),
                             false);
}

void PrintGlyphDeltas(TTableDumper& out, int indent, const VellTrueTypeGlyph& mod, const VellTrueTypeGlyph& orig) {
    if (KindOf(mod) != KindOf(orig)) {
        out.PrintStringField(indent, ModLabel("Glyph kind"), GlyphKind(mod));
        out.PrintStringField(indent, OrigLabel("Glyph kind"), GlyphKind(orig));
    }
    if (!std::equal(mod.bounds, mod.bounds + 4, orig.bounds)) {
        out.PrintStringField(indent, ModLabel("Bounds"), BoundsText(mod));
        out.PrintStringField(indent, OrigLabel("Bounds"), BoundsText(orig));
    }
    PrintOutlineDeltas(out, indent, mod.outline, orig.outline, false);
    size_t components = std::max(mod.components.size(), orig.components.size());
    for (size_t k = 0; k < components; ++k) {
        std::string modText = k < mod.components.size() ? ComponentText(mod.components[k]) : "(none)";
        std::string origText = k < orig.components.size() ? ComponentText(orig.components[k]) : "(none)";
        if (modText == origText) continue;
        out.PrintStringField(indent, ModLabel("Component " + std::to_string(k)), modText);
        out.PrintStringField(indent, OrigLabel("Component " + std::to_string(k)), origText);
    }
    if (!(mod.instructions == orig.instructions)) PrintInstructionDeltas(out, indent, mod.instructions, orig.instructions);
}

std::vector<std::string> GlyphNames(TFontContext& font, uint32_t count) {
    std::vector<std::string> names;
    names.reserve(count);
    for (uint32_t glyph = 0; glyph < count; ++glyph) names.push_back(font.GlyphName(glyph));
    return names;
}

}  // namespace

// ---- Dumper ----

int32_t TGLYFOutlineTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellGlyphLocations locations = FindGlyphs(GetFont());
    VellTrueTypeGlyph glyph;
    for (uint32_t g = 0; g < locations.glyphCount; ++g) {
        PrintGlyphLine(*this, 0, "Glyph ID", g);
        VellDecodeTrueTypeGlyph(GlyphBytes(locations, g), &glyph);
        PrintOutline(*this, 1, glyph.outline);
        for (size_t k = 0; k < glyph.components.size(); ++k)
            PrintStringField(1, "Component " + std::to_string(k), ComponentText(glyph.components[k]));
        if (!glyph.instructions.empty())
            PrintUInt32Field(1, "Instruction bytes", static_cast<uint32_t>(glyph.instructions.size()), false);
    }
    return 0;
}

// ---- Comparator ----

int32_t TGLYFOutlineTableComparator::GetGlyphName(uint32_t glyph, std::string& name) {
    name = glyph < fNames->size() ? (*fNames)[glyph] : std::string();
    return 0;
}

int32_t TGLYFOutlineTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    // The outline account has no records of its own yet: under --json (and in a
    // counting pass) the table's differences are its differing byte ranges.
    if (WritesRecords() || IsCountingPass()) return ReportDifferingRanges();
    VellGlyphLocations modified = FindGlyphs(GetModifiedFont()), original = FindGlyphs(GetOriginalFont());
    fModifiedNames = GlyphNames(*GetModifiedContext(), modified.glyphCount);
    fOriginalNames = GlyphNames(*GetOriginalContext(), original.glyphCount);
    GlyphPairing pairing = PairGlyphs(fModifiedNames, modified.glyphCount, fOriginalNames, original.glyphCount);
    bool reported = false;
    auto listGlyphs = [&](const std::vector<uint32_t>& glyphs, const std::vector<std::string>* names,
                          const char* heading) {
        if (glyphs.empty()) return;
        PrintLine(heading, true);
        fNames = names;
        for (size_t k = 0; k < glyphs.size() && k < kListedGlyphs; ++k) {
            if (pairing.byName)
                PrintStringField(1, "Glyph name", (*names)[glyphs[k]]);
            else
                PrintGlyphLine(*this, 1, "Glyph ID", glyphs[k]);
        }
        if (glyphs.size() > kListedGlyphs)
            PrintUInt32Field(1, "Not listed", static_cast<uint32_t>(glyphs.size() - kListedGlyphs), false);
        fNames = &fModifiedNames;
        reported = true;
    };
    listGlyphs(pairing.added, &fModifiedNames, "\n### Added glyphs (in modified font and not original font):");
    listGlyphs(pairing.deleted, &fOriginalNames, "\n### Deleted glyphs (in original font but not in modified font):");

    size_t changed = 0;
    VellTrueTypeGlyph mod, orig;
    for (auto [m, o] : pairing.pairs) {
        VellView modifiedBytes = GlyphBytes(modified, m), originalBytes = GlyphBytes(original, o);
        if (modifiedBytes == originalBytes) continue;
        VellDecodeTrueTypeGlyph(modifiedBytes, &mod);
        VellDecodeTrueTypeGlyph(originalBytes, &orig);
        if (SameGlyph(mod, orig)) continue;
        if (changed++ == 0) PrintLine("\n### Changed glyphs:", true);
        if (changed > kListedGlyphs) continue;
        PrintGlyphLine(*this, 1, "Glyph ID", m);
        if (m != o) {
            fNames = &fOriginalNames;
            PrintGlyphLine(*this, 2, "Original glyph ID", o);
            fNames = &fModifiedNames;
        }
        PrintGlyphDeltas(*this, 2, mod, orig);
    }
    if (changed > kListedGlyphs)
        PrintUInt32Field(1, "Changed glyphs not listed", static_cast<uint32_t>(changed - kListedGlyphs), false);
    if (!reported && changed == 0)
        PrintLine("\tNo glyph differs: the tables differ only in how their glyphs are encoded", true);
    return 0;
}

GLYFOutlineChanges FindGLYFOutlineChanges(TFontContext& modifiedFont, TFontContext& originalFont) {
    VellGlyphLocations modified = FindGlyphs(modifiedFont.Font()), original = FindGlyphs(originalFont.Font());
    GlyphPairing pairing = PairGlyphs(GlyphNames(modifiedFont, modified.glyphCount), modified.glyphCount,
                                      GlyphNames(originalFont, original.glyphCount), original.glyphCount);
    GLYFOutlineChanges changes{{}, pairing.added, pairing.deleted};
    VellTrueTypeGlyph mod, orig;
    for (auto [m, o] : pairing.pairs) {
        VellView modifiedBytes = GlyphBytes(modified, m), originalBytes = GlyphBytes(original, o);
        if (modifiedBytes == originalBytes) continue;
        VellDecodeTrueTypeGlyph(modifiedBytes, &mod);
        VellDecodeTrueTypeGlyph(originalBytes, &orig);
        if (!SameGlyph(mod, orig)) changes.changed.emplace_back(m, o);
    }
    return changes;
}
