#include "tables/CFF.h"

#include <map>
#include <memory>
#include <optional>

#include "comparators/TOutlineDeltas.h"
#include "framework/VellCFF.h"
#include "framework/VellOutlines.h"

namespace {

constexpr VellTag kCFF2 = VellMakeTag("CFF2");
constexpr uint16_t kROSOp = VellCFFEscaped(30);
constexpr uint16_t kFontMatrixOp = VellCFFEscaped(7);
constexpr uint16_t kFontNameOp = VellCFFEscaped(38);
constexpr uint16_t kDefaultWidthXOp = 20;
constexpr uint16_t kNominalWidthXOp = 21;

void AppendNumber(std::string& text, double value) {
    if (!text.empty()) text.push_back(' ');
    text.append(VellFormat("%.10g", value));
}

// An entry's operands as the font means them: strings for string IDs, the
// registry, ordering and supplement of ROS, absolute values for delta arrays.
std::string OperandText(const VellCFF& cff, const VellCFFDictEntry& entry) {
    std::string text;
    const auto& operands = entry.operands;
    auto string = [&](double sid) { return cff.String(sid >= 0 && sid < 65536 ? static_cast<uint32_t>(sid) : 0); };
    if (entry.op == kROSOp && operands.size() == 3) return string(operands[0]) + "-" + string(operands[1]) + "-" +
                                                           VellFormat("%.10g", operands[2]);
    if (VellCFFIsStringOperator(entry.op) && operands.size() == 1) return string(operands[0]);
    double sum = 0;
    for (double operand : operands) {
        sum = VellCFFIsDeltaOperator(entry.op) ? sum + operand : operand;
        AppendNumber(text, sum);
    }
    return text;
}

// The DICT fields that differ, as label and both values; fields that only say
// where something lies in the table are left out.
struct FieldDelta {
    std::string label, modified, original;
    const VellCFFDictEntry* modifiedEntry = nullptr;
    const VellCFFDictEntry* originalEntry = nullptr;
};

// An entry's operands as a record's value: a string for string IDs and ROS, a
// number for one operand, an array otherwise (delta arrays as absolute values);
// null where the DICT has no such entry.
void WriteOperands(JsonWriter& writer, const VellCFF& cff, const VellCFFDictEntry* entry, const std::string& text) {
    if (entry == nullptr) {
        if (text == "(none)") writer.Null(); else WriteText(writer, text);
        return;
    }
    const auto& operands = entry->operands;
    if ((entry->op == kROSOp && operands.size() == 3) || (VellCFFIsStringOperator(entry->op) && operands.size() == 1))
        return WriteText(writer, OperandText(cff, *entry));
    auto number = [&](double value) {
        if (value == static_cast<double>(static_cast<int64_t>(value)) && value > -1e15 && value < 1e15)
            writer.Int64(static_cast<int64_t>(value));
        else
            writer.Double(value);
    };
    if (operands.size() == 1) return number(operands[0]);
    writer.StartArray();
    double sum = 0;
    for (double operand : operands) {
        sum = VellCFFIsDeltaOperator(entry->op) ? sum + operand : operand;
        number(sum);
    }
    writer.EndArray();
}

std::vector<FieldDelta> DictDeltas(const VellCFF& modifiedCFF, const VellCFFDict& modified,
                                   const VellCFF& originalCFF, const VellCFFDict& original) {
    std::vector<FieldDelta> deltas;
    auto text = [](const VellCFF& cff, const VellCFFDictEntry* entry) {
        return entry == nullptr ? std::string("(none)") : OperandText(cff, *entry);
    };
    auto compare = [&](uint16_t op) {
        if (VellCFFIsOffsetOperator(op)) return;
        for (const FieldDelta& delta : deltas)
            if (delta.label == VellCFFOperatorName(op)) return;
        std::string mod = text(modifiedCFF, modified.Find(op)), orig = text(originalCFF, original.Find(op));
        if (mod != orig) deltas.push_back({VellCFFOperatorName(op), mod, orig, modified.Find(op), original.Find(op)});
    };
    for (const VellCFFDictEntry& entry : modified.entries) compare(entry.op);
    for (const VellCFFDictEntry& entry : original.entries)
        if (modified.Find(entry.op) == nullptr) compare(entry.op);
    return deltas;
}

// Keeps the deltas the account's gate lets through, each under the enclosing
// PathScopes by its operator's name.
void FilterDeltas(TTableDumper& out, const VellCFF& modified, const VellCFF& original, std::vector<FieldDelta>& deltas) {
    std::erase_if(deltas, [&](const FieldDelta& delta) {
        return !out.ShowsDifference(DifferenceKind::Changed, delta.label, [&](JsonWriter& writer) {
            writer.Key("original");
            WriteOperands(writer, original, delta.originalEntry, delta.original);
            writer.Key("modified");
            WriteOperands(writer, modified, delta.modifiedEntry, delta.modified);
        });
    });
}

void PrintDeltas(TTableDumper& out, const std::string& heading, const std::vector<FieldDelta>& deltas) {
    if (deltas.empty()) return;
    out.PrintLine("\t" + heading, true);
    for (const FieldDelta& delta : deltas) {
        out.PrintStringField(2, ModLabel(delta.label), delta.modified);
        out.PrintStringField(2, OrigLabel(delta.label), delta.original);
    }
}

void PrintDict(TTableDumper& out, int indent, const VellCFF& cff, const VellCFFDict& dict) {
    for (const VellCFFDictEntry& entry : dict.entries)
        out.PrintStringField(indent, VellCFFOperatorName(entry.op), OperandText(cff, entry));
}

std::string FontDictHeading(const VellCFF& cff, size_t fd) {
    if (!cff.cff2 && !cff.cidKeyed) return "Private DICT";
    std::string heading = "Font DICT " + std::to_string(fd);
    if (fd < cff.fonts.size() && cff.fonts[fd].fontDict.Find(kFontNameOp) != nullptr)
        heading += " (" + OperandText(cff, *cff.fonts[fd].fontDict.Find(kFontNameOp)) + ")";
    return heading;
}

bool ReadTable(VellView table, VellTag tag, VellCFF* cff, std::string* why) {
    return VellReadCFF(table, tag == kCFF2, cff, why);
}

// FreeType reads a 'CFF ' table bare, so that widths come from the charstrings; a
// 'CFF2' only inside an sfnt, with the tables that give it metrics and axes.
std::unique_ptr<VellOutlineFace> OpenFace(TFontContext& font, VellView table, const VellCFF& cff, std::string* why) {
    if (!cff.cff2) return VellOutlineFace::OpenCFF(table, cff.cidKeyed ? cff.charset : std::vector<uint16_t>{}, why);
    std::vector<std::pair<VellTag, VellView>> tables{{kCFF2, table}};
    for (VellTag tag : {VellMakeTag("head"), VellMakeTag("hhea"), VellMakeTag("hmtx"), VellMakeTag("maxp"),
                        VellMakeTag("fvar"), VellMakeTag("avar")}) {
        VellView side = font.Table(tag);
        if (!side.empty()) tables.emplace_back(tag, side);
    }
    return VellOutlineFace::OpenSfnt(VellBuildSfnt(tables), why);
}

// How many named instances the outlines are compared at: all of them when both
// fonts have the same ones at the same coordinates, else none.
int ComparedInstances(const VellOutlineFace& modified, const VellOutlineFace& original) {
    if (modified.Instances().size() != original.Instances().size()) return 0;
    for (size_t i = 0; i < modified.Instances().size(); ++i)
        if (modified.Instances()[i].coordinates != original.Instances()[i].coordinates) return 0;
    return static_cast<int>(modified.Instances().size());
}

std::vector<std::string> GlyphNames(TFontContext& font, const VellCFF& cff) {
    std::vector<std::string> names;
    if (VellCFFGlyphNames(cff, &names)) return names;
    // 'CFF2' keeps no glyph names; 'post' may.
    for (uint32_t glyph = 0; glyph < cff.GlyphCount() && glyph < font.GlyphCount(); ++glyph)
        names.push_back(font.GlyphName(glyph));
    return names;
}

// Whether a glyph's charstring means the same in both fonts when its bytes are
// the same: the subroutines it may call, the widths it counts from, the matrix
// and, in 'CFF2', the variation data are the same.
class SameContext {
public:
    SameContext(const VellCFF& modified, const VellCFF& original) : fModified(modified), fOriginal(original) {
        fShared = modified.globalSubrs == original.globalSubrs && modified.variationStore == original.variationStore &&
                  OperandsEqual(modified.top, original.top, kFontMatrixOp);
    }
    bool operator()(uint16_t modifiedFD, uint16_t originalFD) {
        if (!fShared || modifiedFD >= fModified.fonts.size() || originalFD >= fOriginal.fonts.size()) return false;
        auto found = fKnown.find({modifiedFD, originalFD});
        if (found != fKnown.end()) return found->second;
        const VellCFFFont &mod = fModified.fonts[modifiedFD], &orig = fOriginal.fonts[originalFD];
        bool same = mod.localSubrs == orig.localSubrs && OperandsEqual(mod.fontDict, orig.fontDict, kFontMatrixOp) &&
                    OperandsEqual(mod.privateDict, orig.privateDict, kDefaultWidthXOp) &&
                    OperandsEqual(mod.privateDict, orig.privateDict, kNominalWidthXOp) &&
                    (!fModified.cff2 || mod.privateBytes == orig.privateBytes);
        fKnown.emplace(std::make_pair(modifiedFD, originalFD), same);
        return same;
    }

private:
    static bool OperandsEqual(const VellCFFDict& a, const VellCFFDict& b, uint16_t op) {
        const VellCFFDictEntry *x = a.Find(op), *y = b.Find(op);
        return x == y || (x != nullptr && y != nullptr && x->operands == y->operands);
    }
    const VellCFF& fModified;
    const VellCFF& fOriginal;
    bool fShared = false;
    std::map<std::pair<uint16_t, uint16_t>, bool> fKnown;
};

}  // namespace

// ---- Dumper ----

int32_t TCFFTableDumper::GetGlyphName(uint32_t glyph, std::string& name) {
    name = glyph < fNames.size() ? fNames[glyph] : std::string();
    return 0;
}

int32_t TCFFTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellCFF cff;
    std::string why;
    if (!ReadTable(GetTableView(), GetTableTag(), &cff, &why)) {
        PrintLine("Note: " + why + "; the table in hex follows", true);
        return TTableDumper::DumpTableContents();
    }
    PrintLine("Top DICT", true);
    PrintDict(*this, 1, cff, cff.top);
    for (size_t fd = 0; fd < cff.fonts.size(); ++fd) {
        if (cff.cff2 || cff.cidKeyed) {
            PrintLine(FontDictHeading(cff, fd), true);
            PrintDict(*this, 1, cff, cff.fonts[fd].fontDict);
        }
        PrintLine(cff.cff2 || cff.cidKeyed ? "\tPrivate DICT" : "Private DICT", true);
        PrintDict(*this, cff.cff2 || cff.cidKeyed ? 2 : 1, cff, cff.fonts[fd].privateDict);
    }
    fNames = GlyphNames(*GetContext(), cff);
    std::unique_ptr<VellOutlineFace> face = OpenFace(*GetContext(), GetTableView(), cff, &why);
    if (!face) {
        PrintLine("Note: " + why + "; no outline is listed", true);
        return 0;
    }
    VellOutline outline;
    for (uint32_t glyph = 0; glyph < cff.GlyphCount(); ++glyph) {
        PrintGlyphLine(*this, 0, "Glyph ID", glyph);
        if (cff.cidKeyed && glyph < cff.charset.size()) PrintUInt16Field(1, "CID", cff.charset[glyph], false);
        if (!face->Load(glyph, &outline)) {
            PrintLine("\tNo outline: FreeType cannot read the charstring", true);
            continue;
        }
        if (!cff.cff2) PrintInt32Field(1, "Width", outline.advance, false, true);
        PrintOutline(*this, 1, outline);
        std::string hints = VellCFFHintText(cff, glyph);
        if (!hints.empty()) PrintStringField(1, "Hints", hints);
    }
    return 0;
}

// ---- Comparator ----

int32_t TCFFTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellCFF modified, original;
    std::string why;
    if (!ReadTable(GetTableView(), GetTableTag(), &modified, &why) ||
        !ReadTable(GetOriginalTableView(), GetTableTag(), &original, &why)) {
        PrintLine("\tNote: " + why + "; the difference in hex follows", true);
        return TTableComparator::DumpTableDeltas();
    }
    bool reported = false;
    // Under --json, --ignore and in a counting pass a glyph's heading waits for
    // its first difference the gate lets through.
    const bool filtered = WritesRecords() || IsCountingPass() || !gIgnoreRules.empty();

    // ---- The DICTs ----
    std::vector<FieldDelta> top = DictDeltas(modified, modified.top, original, original.top);
    if (modified.fontName != original.fontName) top.insert(top.begin(), {"FontName", modified.fontName, original.fontName});
    {
        PathScope scope(*this, "Top DICT");
        FilterDeltas(*this, modified, original, top);
    }
    PrintDeltas(*this, "Top DICT", top);
    reported |= !top.empty();
    if (modified.fonts.size() != original.fonts.size() &&
        ShowsDifference(DifferenceKind::Changed, "Font DICTs", [&](JsonWriter& writer) {
            writer.Key("original");
            writer.Uint64(original.fonts.size());
            writer.Key("modified");
            writer.Uint64(modified.fonts.size());
        })) {
        PrintUInt32Field(1, ModLabel("Font DICTs"), static_cast<uint32_t>(modified.fonts.size()), false);
        PrintUInt32Field(1, OrigLabel("Font DICTs"), static_cast<uint32_t>(original.fonts.size()), false);
        reported = true;
    }
    // A name-keyed 'CFF ' has one Private DICT, ["Private DICT", operator]; a
    // CID-keyed one and 'CFF2' have Font DICTs, ["Font DICT", fd, operator] and
    // ["Private DICT", fd, operator].
    const bool fontDicts = modified.cff2 || modified.cidKeyed;
    for (size_t fd = 0; fd < std::min(modified.fonts.size(), original.fonts.size()); ++fd) {
        const VellCFFFont &mod = modified.fonts[fd], &orig = original.fonts[fd];
        std::vector<FieldDelta> deltas;
        if (fontDicts) {
            deltas = DictDeltas(modified, mod.fontDict, original, orig.fontDict);
            PathScope scope(*this, "Font DICT");
            PathScope number(*this, fd);
            FilterDeltas(*this, modified, original, deltas);
        }
        std::vector<FieldDelta> privateDeltas = DictDeltas(modified, mod.privateDict, original, orig.privateDict);
        {
            PathScope scope(*this, "Private DICT");
            std::optional<PathScope> number;
            if (fontDicts) number.emplace(*this, fd);
            FilterDeltas(*this, modified, original, privateDeltas);
        }
        for (FieldDelta& delta : privateDeltas) deltas.push_back(std::move(delta));
        PrintDeltas(*this, FontDictHeading(modified, fd), deltas);
        reported |= !deltas.empty();
    }

    // ---- The charset ----
    fModifiedNames = GlyphNames(*GetModifiedContext(), modified);
    fOriginalNames = GlyphNames(*GetOriginalContext(), original);
    GlyphPairing pairing =
        PairGlyphs(fModifiedNames, modified.GlyphCount(), fOriginalNames, original.GlyphCount());
    const char* what = !pairing.byName ? "glyphs" : modified.cidKeyed && original.cidKeyed ? "CIDs" : "glyph names";
    auto listGlyphs = [&](const std::vector<uint32_t>& glyphs, const VellCFF& cff, const std::vector<std::string>& names,
                          DifferenceKind kind, const std::string& heading) {
        size_t listed = 0;
        for (uint32_t glyph : glyphs) {
            bool cid = cff.cidKeyed && glyph < cff.charset.size();
            if (!ShowsDifference(kind, GlyphStep(pairing, names, glyph), [&](JsonWriter& writer) {
                    writer.Key("value");
                    writer.StartObject();
                    writer.Key("glyph");
                    writer.Uint(glyph);
                    if (glyph < names.size() && !names[glyph].empty()) {
                        writer.Key("name");
                        WriteText(writer, names[glyph]);
                    }
                    if (cid) {
                        writer.Key("CID");
                        writer.Uint(cff.charset[glyph]);
                    }
                    writer.EndObject();
                }))
                continue;
            if (listed++ == 0) PrintLine(heading, true);
            if (listed > kListedGlyphs) continue;
            if (!pairing.byName)
                PrintUInt32Field(1, "Glyph ID", glyph, false);
            else if (cid)
                PrintUInt16Field(1, "CID", cff.charset[glyph], false);
            else
                PrintStringField(1, "Glyph name", names[glyph]);
        }
        if (listed > kListedGlyphs)
            PrintUInt32Field(1, "Not listed", static_cast<uint32_t>(listed - kListedGlyphs), false);
        reported |= listed > 0;
    };
    listGlyphs(pairing.added, modified, fModifiedNames, DifferenceKind::Added,
               std::string("\n### Added ") + what + " (in modified font and not original font):");
    listGlyphs(pairing.deleted, original, fOriginalNames, DifferenceKind::Deleted,
               std::string("\n### Deleted ") + what + " (in original font but not in modified font):");

    // ---- The outlines ----
    std::unique_ptr<VellOutlineFace> modifiedFace = OpenFace(*GetModifiedContext(), GetTableView(), modified, &why);
    std::unique_ptr<VellOutlineFace> originalFace =
        modifiedFace ? OpenFace(*GetOriginalContext(), GetOriginalTableView(), original, &why) : nullptr;
    if (!modifiedFace || !originalFace) {
        PrintLine("\tNote: " + why + "; the difference in hex follows", true);
        return TTableComparator::DumpTableDeltas();
    }
    int instances = ComparedInstances(*modifiedFace, *originalFace);
    SameContext sameContext(modified, original);
    size_t changed = 0;
    VellOutline modifiedOutline, originalOutline;
    for (const auto& pair : pairing.pairs) {
        // Named copies: clang 14 cannot capture structured bindings in the heading lambda.
        const uint32_t m = pair.first, o = pair.second;
        // Past the account's budget nothing more is printed or written.
        if (OutputExhausted()) break;
        if (modified.charStrings.Object(m) == original.charStrings.Object(o) &&
            sameContext(modified.fdSelect[m], original.fdSelect[o]))
            continue;
        // Hints are read from the charstrings ('CFF ' only): FreeType draws without them.
        std::string modifiedHints = VellCFFHintText(modified, m), originalHints = VellCFFHintText(original, o);
        PathScope glyph(*this, GlyphStep(pairing, fModifiedNames, m));
        bool headed = false;
        for (int location = -1; location < instances; ++location) {
            if (instances > 0) {
                modifiedFace->SetInstance(location);
                originalFace->SetInstance(location);
            }
            bool modifiedRead = modifiedFace->Load(m, &modifiedOutline);
            bool originalRead = originalFace->Load(o, &originalOutline);
            bool hintsDiffer = location < 0 && modifiedHints != originalHints;
            if (modifiedRead == originalRead && modifiedOutline == originalOutline && !hintsDiffer) continue;
            // The glyph's heading, once, then the location's; whether the lines
            // of this glyph are printed at all.
            bool located = false;
            auto listed = [&] {
                if (!headed) {
                    headed = true;
                    if (changed++ == 0) PrintLine("\n### Changed glyphs:", true);
                    if (changed > kListedGlyphs) return false;
                    PrintGlyphLine(*this, 1, "Glyph ID", m);
                    fNames = &fOriginalNames;
                    if (m != o) PrintGlyphLine(*this, 2, "Original glyph ID", o);
                    fNames = &fModifiedNames;
                }
                if (changed > kListedGlyphs) return false;
                if (!located && instances > 0) {
                    if (location < 0)
                        PrintStringField(2, "Location", "default");
                    else
                        PrintFontNameField(2, "Named instance", modifiedFace->Instances()[location].subfamilyNameID);
                }
                located = true;
                return true;
            };
            if (!filtered && !listed()) break;
            int indent = instances > 0 ? 3 : 2;
            // A named instance's differences are under ["instance", index]; the
            // default location's under the glyph itself.
            std::optional<PathScope> instance, instanceNumber;
            if (location >= 0) {
                instance.emplace(*this, "instance");
                instanceNumber.emplace(*this, location);
            }
            if (modifiedRead != originalRead) {
                if (ShowsDifference(DifferenceKind::Changed, "charstring", [&](JsonWriter& writer) {
                        writer.Key("original");
                        writer.String(originalRead ? "read" : "not readable");
                        writer.Key("modified");
                        writer.String(modifiedRead ? "read" : "not readable");
                    }) && listed()) {
                    PrintStringField(indent, ModLabel("Charstring"), modifiedRead ? "read" : "not readable");
                    PrintStringField(indent, OrigLabel("Charstring"), originalRead ? "read" : "not readable");
                }
            } else {
                PrintOutlineDeltas(*this, indent, modifiedOutline, originalOutline, !modified.cff2, listed);
            }
            auto hints = [](JsonWriter& writer, const std::string& text) {
                if (text.empty()) writer.Null(); else WriteText(writer, text);
            };
            if (hintsDiffer && ShowsDifference(DifferenceKind::Changed, "hints", [&](JsonWriter& writer) {
                    writer.Key("original");
                    hints(writer, originalHints);
                    writer.Key("modified");
                    hints(writer, modifiedHints);
                }) && listed()) {
                PrintStringField(indent, ModLabel("Hints"), modifiedHints.empty() ? "(none)" : modifiedHints);
                PrintStringField(indent, OrigLabel("Hints"), originalHints.empty() ? "(none)" : originalHints);
            }
        }
    }
    if (changed > kListedGlyphs)
        PrintUInt32Field(1, "Changed glyphs not listed", static_cast<uint32_t>(changed - kListedGlyphs), false);
    if (!reported && changed == 0)
        PrintLine("\tNo field, glyph name or outline differs: the tables differ only in how they are encoded", true);
    return 0;
}

bool FindCFFGlyphChanges(TFontContext& modifiedFont, TFontContext& originalFont, VellTag tag,
                         CFFGlyphChanges* changes) {
    VellCFF modified, original;
    std::string why;
    VellView modifiedTable = modifiedFont.Table(tag), originalTable = originalFont.Table(tag);
    if (!ReadTable(modifiedTable, tag, &modified, &why) || !ReadTable(originalTable, tag, &original, &why))
        return false;
    changes->modifiedFace = OpenFace(modifiedFont, modifiedTable, modified, &why);
    changes->originalFace = OpenFace(originalFont, originalTable, original, &why);
    if (!changes->modifiedFace || !changes->originalFace) return false;
    GlyphPairing pairing = PairGlyphs(GlyphNames(modifiedFont, modified), modified.GlyphCount(),
                                      GlyphNames(originalFont, original), original.GlyphCount());
    changes->added = pairing.added;
    changes->deleted = pairing.deleted;
    int instances = ComparedInstances(*changes->modifiedFace, *changes->originalFace);
    SameContext sameContext(modified, original);
    VellOutline modifiedOutline, originalOutline;
    for (auto [m, o] : pairing.pairs) {
        if (modified.charStrings.Object(m) == original.charStrings.Object(o) &&
            sameContext(modified.fdSelect[m], original.fdSelect[o]))
            continue;
        bool hintsDiffer = VellCFFHintText(modified, m) != VellCFFHintText(original, o);
        for (int location = -1; location < instances; ++location) {
            if (instances > 0) {
                changes->modifiedFace->SetInstance(location);
                changes->originalFace->SetInstance(location);
            }
            bool modifiedRead = changes->modifiedFace->Load(m, &modifiedOutline);
            bool originalRead = changes->originalFace->Load(o, &originalOutline);
            if (modifiedRead != originalRead || !(modifiedOutline == originalOutline) || (location < 0 && hintsDiffer)) {
                changes->changed.push_back({m, o, location});
                break;
            }
        }
    }
    // The faces are left at the default location, where added and deleted glyphs are drawn.
    if (instances > 0) {
        changes->modifiedFace->SetInstance(-1);
        changes->originalFace->SetInstance(-1);
    }
    return true;
}
