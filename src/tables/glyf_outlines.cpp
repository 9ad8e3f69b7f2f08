#include "tables/glyf_outlines.h"

#include <algorithm>
#include <array>
#include <functional>

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

// A component as the records give it: its glyph, flags and arguments (signed),
// and its matrix in 2.14 when it is not the identity.
void WriteComponent(JsonWriter& writer, const VellGlyphComponent& component) {
    writer.StartObject();
    writer.Key("glyphIndex");
    writer.Uint(component.glyph);
    writer.Key("flags");
    writer.Uint(component.flags);
    writer.Key("arguments");
    writer.StartArray();
    writer.Int(component.argument1);
    writer.Int(component.argument2);
    writer.EndArray();
    if (component.matrix[0] != 0x4000 || component.matrix[1] != 0 || component.matrix[2] != 0 ||
        component.matrix[3] != 0x4000) {
        writer.Key("matrix");
        writer.StartArray();
        for (int32_t value : component.matrix) WriteF2Dot14(writer, static_cast<int16_t>(value));
        writer.EndArray();
    }
    writer.EndObject();
}

void WriteBounds(JsonWriter& writer, const VellTrueTypeGlyph& glyph) {
    writer.StartArray();
    for (int16_t bound : glyph.bounds) writer.Int(bound);
    writer.EndArray();
}

// The instructions that differ: those between the longest common beginning and
// the longest common end of the two programs. Each passes the gate as
// ["instructions", index].
void PrintInstructionDeltas(TTableDumper& out, int indent, VellView modified, VellView original,
                            const std::function<bool()>& listed) {
    std::vector<std::string> mod = Disassemble(modified), orig = Disassemble(original);
    size_t prefix = 0;
    while (prefix < mod.size() && prefix < orig.size() && mod[prefix] == orig[prefix]) ++prefix;
    size_t suffix = 0;
    while (suffix < mod.size() - prefix && suffix < orig.size() - prefix &&
           mod[mod.size() - 1 - suffix] == orig[orig.size() - 1 - suffix])
        ++suffix;
    size_t rows = std::max(mod.size(), orig.size()) - prefix - suffix, shown = 0;
    TTableDumper::PathScope instructions(out, "instructions");
    for (size_t k = 0; k < rows; ++k) {
        size_t index = prefix + k;
        const std::string* modText = index < mod.size() - suffix ? &mod[index] : nullptr;
        const std::string* origText = index < orig.size() - suffix ? &orig[index] : nullptr;
        auto side = [&](JsonWriter& writer, const std::string* text) {
            if (text != nullptr) WriteText(writer, *text); else writer.Null();
        };
        if (!out.ShowsDifference(DifferenceKind::Changed, index, [&](JsonWriter& writer) {
                writer.Key("original");
                side(writer, origText);
                writer.Key("modified");
                side(writer, modText);
            }))
            continue;
        if (shown++ >= kListedInstructions || !listed()) continue;
        std::string label = "Instruction " + std::to_string(index);
        out.PrintStringField(indent, ModLabel(label), modText != nullptr ? *modText : "(none)");
        out.PrintStringField(indent, OrigLabel(label), origText != nullptr ? *origText : "(none)");
    }
    if (shown > kListedInstructions && listed())
        out.PrintUInt32Field(indent, "Differing instructions not listed", static_cast<uint32_t>(shown - kListedInstructions),
                             false);
}

// A glyph's differences, each through the gate under the glyph's PathScope:
// ["kind"], ["bounds"], the outline's, ["components", index], ["instructions", index].
void PrintGlyphDeltas(TTableDumper& out, int indent, const VellTrueTypeGlyph& mod, const VellTrueTypeGlyph& orig,
                      const std::function<bool()>& listed) {
    if (KindOf(mod) != KindOf(orig) && out.ShowsDifference(DifferenceKind::Changed, "kind", [&](JsonWriter& writer) {
            writer.Key("original");
            writer.String(GlyphKind(orig));
            writer.Key("modified");
            writer.String(GlyphKind(mod));
        }) && listed()) {
        out.PrintStringField(indent, ModLabel("Glyph kind"), GlyphKind(mod));
        out.PrintStringField(indent, OrigLabel("Glyph kind"), GlyphKind(orig));
    }
    if (!std::equal(mod.bounds, mod.bounds + 4, orig.bounds) &&
        out.ShowsDifference(DifferenceKind::Changed, "bounds", [&](JsonWriter& writer) {
            writer.Key("original");
            WriteBounds(writer, orig);
            writer.Key("modified");
            WriteBounds(writer, mod);
        }) && listed()) {
        out.PrintStringField(indent, ModLabel("Bounds"), BoundsText(mod));
        out.PrintStringField(indent, OrigLabel("Bounds"), BoundsText(orig));
    }
    PrintOutlineDeltas(out, indent, mod.outline, orig.outline, false, listed);
    {
        size_t components = std::max(mod.components.size(), orig.components.size());
        TTableDumper::PathScope componentScope(out, "components");
        for (size_t k = 0; k < components; ++k) {
            const VellGlyphComponent* modComponent = k < mod.components.size() ? &mod.components[k] : nullptr;
            const VellGlyphComponent* origComponent = k < orig.components.size() ? &orig.components[k] : nullptr;
            std::string modText = modComponent != nullptr ? ComponentText(*modComponent) : "(none)";
            std::string origText = origComponent != nullptr ? ComponentText(*origComponent) : "(none)";
            if (modText == origText) continue;
            auto side = [&](JsonWriter& writer, const VellGlyphComponent* component) {
                if (component != nullptr) WriteComponent(writer, *component); else writer.Null();
            };
            if (!out.ShowsDifference(DifferenceKind::Changed, k, [&](JsonWriter& writer) {
                    writer.Key("original");
                    side(writer, origComponent);
                    writer.Key("modified");
                    side(writer, modComponent);
                }) || !listed())
                continue;
            out.PrintStringField(indent, ModLabel("Component " + std::to_string(k)), modText);
            out.PrintStringField(indent, OrigLabel("Component " + std::to_string(k)), origText);
        }
    }
    if (!(mod.instructions == orig.instructions))
        PrintInstructionDeltas(out, indent, mod.instructions, orig.instructions, listed);
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

int32_t TGLYFOutlineTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellGlyphLocations modified = FindGlyphs(GetModifiedFont()), original = FindGlyphs(GetOriginalFont());
    fModifiedNames = GlyphNames(*GetModifiedContext(), modified.glyphCount);
    fOriginalNames = GlyphNames(*GetOriginalContext(), original.glyphCount);
    GlyphPairing pairing = PairGlyphs(fModifiedNames, modified.glyphCount, fOriginalNames, original.glyphCount);
    bool reported = false;
    // Under --json, --ignore and in a counting pass the headings wait for the
    // first difference the gate lets through.
    const bool filtered = WritesRecords() || IsCountingPass() || !gIgnoreRules.empty();
    auto listGlyphs = [&](const std::vector<uint32_t>& glyphs, const std::vector<std::string>* names,
                          DifferenceKind kind, const char* heading) {
        size_t listed = 0;
        fNames = names;
        for (uint32_t glyph : glyphs) {
            if (!ShowsDifference(kind, GlyphStep(pairing, *names, glyph), [&](JsonWriter& writer) {
                    writer.Key("value");
                    writer.StartObject();
                    writer.Key("glyph");
                    writer.Uint(glyph);
                    if (!(*names)[glyph].empty()) {
                        writer.Key("name");
                        WriteText(writer, (*names)[glyph]);
                    }
                    writer.EndObject();
                }))
                continue;
            if (listed++ == 0) PrintLine(heading, true);
            if (listed > kListedGlyphs) continue;
            if (pairing.byName)
                PrintStringField(1, "Glyph name", (*names)[glyph]);
            else
                PrintGlyphLine(*this, 1, "Glyph ID", glyph);
        }
        if (listed > kListedGlyphs)
            PrintUInt32Field(1, "Not listed", static_cast<uint32_t>(listed - kListedGlyphs), false);
        fNames = &fModifiedNames;
        reported |= listed > 0;
    };
    listGlyphs(pairing.added, &fModifiedNames, DifferenceKind::Added,
               "\n### Added glyphs (in modified font and not original font):");
    listGlyphs(pairing.deleted, &fOriginalNames, DifferenceKind::Deleted,
               "\n### Deleted glyphs (in original font but not in modified font):");

    size_t changed = 0;
    VellTrueTypeGlyph mod, orig;
    for (const auto& pair : pairing.pairs) {
        // Named copies: clang 14 cannot capture structured bindings in the heading lambda.
        const uint32_t m = pair.first, o = pair.second;
        // Past the account's budget nothing more is printed or written.
        if (OutputExhausted()) break;
        VellView modifiedBytes = GlyphBytes(modified, m), originalBytes = GlyphBytes(original, o);
        if (modifiedBytes == originalBytes) continue;
        VellDecodeTrueTypeGlyph(modifiedBytes, &mod);
        VellDecodeTrueTypeGlyph(originalBytes, &orig);
        if (SameGlyph(mod, orig)) continue;
        // The glyph's heading, once, before its first difference; whether its
        // lines are printed at all.
        bool headed = false;
        auto listed = [&] {
            if (!headed) {
                headed = true;
                if (changed++ == 0) PrintLine("\n### Changed glyphs:", true);
                if (changed > kListedGlyphs) return false;
                PrintGlyphLine(*this, 1, "Glyph ID", m);
                if (m != o) {
                    fNames = &fOriginalNames;
                    PrintGlyphLine(*this, 2, "Original glyph ID", o);
                    fNames = &fModifiedNames;
                }
            }
            return changed <= kListedGlyphs;
        };
        if (!filtered && !listed()) continue;
        PathScope glyph(*this, GlyphStep(pairing, fModifiedNames, m));
        PrintGlyphDeltas(*this, 2, mod, orig, listed);
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
