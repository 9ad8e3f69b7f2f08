#include "tables/VariationReport.h"

#include <algorithm>
#include <unordered_map>

#include "VellCmpErrors.h"
#include "framework/VellNames.h"

namespace {

// 'fvar': axesArrayOffset, axisCount and axisSize; an axis record starts with its tag.
constexpr size_t kAxesArrayOffset = 4;
constexpr size_t kAxisCountOffset = 8;
constexpr size_t kAxisSizeOffset = 10;
constexpr size_t kAxisRecordBytes = 20;

std::string ChangedHeading(std::string_view what) { return "\t### Changed " + std::string(what) + ":"; }

// Where each record of a list sits, by key.
std::unordered_map<std::string, size_t> IndexByKey(const VariationRecords& records) {
    std::unordered_map<std::string, size_t> index;
    for (size_t i = 0; i < records.size(); ++i) index.emplace(records[i].key, i);
    return index;
}

const VariationField* FindField(const VariationRecord& record, const std::string& label) {
    for (const VariationField& field : record.fields)
        if (field.compared && field.label == label) return &field;
    return nullptr;
}

bool RecordsDiffer(const VariationRecord& modified, const VariationRecord& original) {
    for (const VariationField& field : modified.fields) {
        if (!field.compared) continue;
        const VariationField* other = FindField(original, field.label);
        if (other == nullptr ? !field.sameWhenAbsent : other->Compared() != field.Compared()) return true;
    }
    for (const VariationField& field : original.fields)
        if (field.compared && !field.sameWhenAbsent && FindField(modified, field.label) == nullptr) return true;
    return false;
}

// A changed record: its heading, then the pairs of the fields that differ; a
// field only one font has shows under that font's label alone.
void PrintChangedRecord(TTableDumper& dumper, int indent, const VariationRecord& modified,
                        const VariationRecord& original) {
    dumper.PrintLine(std::string(indent, '\t') + modified.heading, true);
    for (const VariationField& field : modified.fields) {
        if (!field.compared) continue;
        const VariationField* other = FindField(original, field.label);
        if (other == nullptr ? field.sameWhenAbsent : other->Compared() == field.Compared()) continue;
        dumper.PrintStringField(indent + 1, ModLabel(field.label), field.value);
        if (other != nullptr) dumper.PrintStringField(indent + 1, OrigLabel(field.label), other->value);
    }
    for (const VariationField& field : original.fields)
        if (field.compared && !field.sameWhenAbsent && FindField(modified, field.label) == nullptr)
            dumper.PrintStringField(indent + 1, OrigLabel(field.label), field.value);
}

// Whether text is a decimal number as JSON spells it: "400.0", "-12".
bool IsDecimalText(std::string_view text) {
    if (text.starts_with('-')) text.remove_prefix(1);
    size_t point = text.find('.');
    std::string_view whole = text.substr(0, point);
    if (whole.empty() || (whole.size() > 1 && whole[0] == '0')) return false;
    if (whole.find_first_not_of("0123456789") != std::string_view::npos) return false;
    if (point == std::string_view::npos) return true;
    std::string_view fraction = text.substr(point + 1);
    return !fraction.empty() && fraction.find_first_not_of("0123456789") == std::string_view::npos;
}

// A printed value as a record holds it: a number where the text is one ("400.0",
// "0x0002"), a point [x, y] for "( x, y )", else the text.
void WriteValueText(JsonWriter& writer, const std::string& text) {
    std::string_view value = text;
    if (IsDecimalText(value)) return static_cast<void>(writer.RawValue(text.data(), text.size(), rapidjson::kNumberType));
    if (value.size() > 2 && value.size() <= 10 && value.starts_with("0x") &&
        value.find_first_not_of("0123456789ABCDEF", 2) == std::string_view::npos)
        return static_cast<void>(writer.Uint(static_cast<uint32_t>(std::stoul(text.substr(2), nullptr, 16))));
    if (value.starts_with("( ") && value.ends_with(" )")) {
        std::string_view inner = value.substr(2, value.size() - 4);
        size_t comma = inner.find(", ");
        if (comma != std::string_view::npos && IsDecimalText(inner.substr(0, comma)) &&
            IsDecimalText(inner.substr(comma + 2))) {
            writer.StartArray();
            writer.RawValue(inner.data(), comma, rapidjson::kNumberType);
            writer.RawValue(inner.data() + comma + 2, inner.size() - comma - 2, rapidjson::kNumberType);
            writer.EndArray();
            return;
        }
    }
    WriteText(writer, text);
}

// A record as an entry's value: its fields by label.
void WriteRecordValue(JsonWriter& writer, const VariationRecord& record) {
    writer.Key("value");
    writer.StartObject();
    for (const VariationField& field : record.fields) {
        writer.Key(field.label.c_str(), static_cast<rapidjson::SizeType>(field.label.size()));
        WriteValueText(writer, field.value);
    }
    writer.EndObject();
}

// Under --json and --ignore: which records and fields are reported, each a
// record under [list, key] or [list, key, label]; a changed record keeps only the
// fields that are. A field only one font has holds null on the other side.
void FilterVariationRecords(TTableDumper& dumper, std::string_view what, VariationRecords& added,
                            VariationRecords& deleted, std::vector<std::pair<VariationRecord, VariationRecord>>& changed) {
    TTableDumper::PathScope list(dumper, std::string(what));
    auto keep = [&](VariationRecords& records, DifferenceKind kind) {
        std::erase_if(records, [&](const VariationRecord& record) {
            return !dumper.ShowsDifference(kind, record.key, [&](JsonWriter& writer) { WriteRecordValue(writer, record); });
        });
    };
    keep(added, DifferenceKind::Added);
    keep(deleted, DifferenceKind::Deleted);
    std::erase_if(changed, [&](std::pair<VariationRecord, VariationRecord>& pair) {
        auto& [modified, original] = pair;
        TTableDumper::PathScope key(dumper, modified.key);
        bool shown = false;
        auto report = [&](const std::string& label, const VariationField* mine, const VariationField* theirs) {
            return dumper.ShowsDifference(DifferenceKind::Changed, label, [&](JsonWriter& writer) {
                writer.Key("original");
                if (theirs) WriteValueText(writer, theirs->value); else writer.Null();
                writer.Key("modified");
                if (mine) WriteValueText(writer, mine->value); else writer.Null();
            });
        };
        std::vector<VariationField> keptModified, keptOriginal;
        for (const VariationField& field : modified.fields) {
            const VariationField* other = field.compared ? FindField(original, field.label) : nullptr;
            bool differs = field.compared && (other == nullptr ? !field.sameWhenAbsent
                                                               : other->Compared() != field.Compared());
            if (!differs || report(field.label, &field, other)) {
                keptModified.push_back(field);
                shown |= differs;
            }
        }
        for (const VariationField& field : original.fields) {
            bool lone = field.compared && !field.sameWhenAbsent && FindField(modified, field.label) == nullptr;
            if (!lone || report(field.label, nullptr, &field)) {
                keptOriginal.push_back(field);
                shown |= lone;
            }
        }
        modified.fields = std::move(keptModified);
        original.fields = std::move(keptOriginal);
        return !shown;
    });
}

}  // namespace

std::string FixedText(int32_t value) {
    std::string text;
    AppendShortFixed(text, value);
    return text;
}

std::string F2Dot14Text(int16_t value) {
    std::string text;
    AppendShortF2Dot14(text, value);
    return text;
}

std::string TagText(VellTag tag) { return "'" + VellTagText(tag) + "'"; }

std::string NameOnly(VellFontRef font, uint16_t nameID) {
    std::string name;
    if (font == nullptr) return name;
    // The framework numbers names one above their name IDs.
    ErrorRecord record;
    VellFindFontNameAsUTF8(font, int32_t{nameID} + 1, 0, 0, 0, &name, 0, &record);
    ThrowIfVellError(record);
    return name;
}

VariationField NameValue(std::string label, VellFontRef font, uint16_t nameID) {
    VariationField field{std::move(label), std::to_string(nameID), true, {}, false};
    if (font == nullptr) return field;
    std::string name = NameOnly(font, nameID);
    field.value += " \"" + name + "\"";
    if (!name.empty()) field.comparedText = "\"" + name + "\"";
    return field;
}

std::vector<VellTag> FontAxisTags(TFontContext* font) {
    std::vector<VellTag> tags;
    if (font == nullptr) return tags;
    VellView fvar = font->Table(VellMakeTag("fvar"));
    size_t axisSize = std::max<size_t>(fvar.u16(kAxisSizeOffset), kAxisRecordBytes);
    size_t first = fvar.u16(kAxesArrayOffset);
    size_t count = fvar.records_that_fit(first, fvar.u16(kAxisCountOffset), axisSize);
    for (size_t axis = 0; axis < count; ++axis) tags.push_back(fvar.tag(first + axis * axisSize));
    return tags;
}

std::string AxisText(const std::vector<VellTag>& axisTags, size_t axis) {
    if (axis < axisTags.size()) return TagText(axisTags[axis]);
    return "axis " + std::to_string(axis);
}

std::string RegionText(const std::vector<VellRegionAxis>& region, const std::vector<VellTag>& axisTags) {
    std::string text;
    for (size_t axis = 0; axis < region.size(); ++axis) {
        const VellRegionAxis& coordinates = region[axis];
        if (coordinates.peak == 0) continue;
        if (!text.empty()) text += ", ";
        text += AxisText(axisTags, axis) + " " + F2Dot14Text(coordinates.peak) + " (" +
                F2Dot14Text(coordinates.start) + " to " + F2Dot14Text(coordinates.end) + ")";
    }
    return text.empty() ? "none" : text;
}

std::string GlyphHeading(TFontContext* font, uint32_t glyph) {
    std::string heading = "Glyph " + std::to_string(glyph);
    if (gShowPostScriptNames && font != nullptr) {
        std::string name = font->GlyphName(glyph);
        if (!name.empty()) heading += " (" + name + ")";
    }
    return heading;
}

std::string DeltaSetText(const VellDeltaSet& set) {
    std::string text;
    for (size_t i = 0; i < set.deltas.size(); ++i) {
        if (!text.empty()) text += ", ";
        text += "region " + std::to_string(set.regionIndexes[i]) + ": " + std::to_string(set.deltas[i]);
    }
    return text.empty() ? "none" : text;
}

std::string ReachedDeltasText(const VellDeltaSet& set) {
    VellDeltaSet reached;
    std::vector<size_t> order;
    for (size_t i = 0; i < set.deltas.size() && i < set.regionIndexes.size(); ++i)
        if (set.deltas[i] != 0) order.push_back(i);
    std::ranges::stable_sort(order, {}, [&](size_t i) { return set.regionIndexes[i]; });
    for (size_t i : order) {
        reached.regionIndexes.push_back(set.regionIndexes[i]);
        reached.deltas.push_back(set.deltas[i]);
    }
    return DeltaSetText(reached);
}

void MakeKeysUnique(VariationRecords& records) {
    std::unordered_map<std::string, size_t> seen;
    for (VariationRecord& record : records) {
        size_t count = ++seen[record.key];
        if (count > 1) record.key += " #" + std::to_string(count);
    }
}

void DumpVariationRecords(TTableDumper& dumper, int indent, const VariationRecords& records) {
    for (const VariationRecord& record : records) {
        dumper.PrintLine(std::string(indent, '\t') + record.heading, true);
        for (const VariationField& field : record.fields) dumper.PrintStringField(indent + 1, field.label, field.value);
    }
}

bool CompareVariationRecords(TTableDumper& dumper, std::string_view what, const VariationRecords& modified,
                             const VariationRecords& original) {
    auto modifiedIndex = IndexByKey(modified), originalIndex = IndexByKey(original);
    VariationRecords added, deleted;
    for (const VariationRecord& record : modified)
        if (!originalIndex.contains(record.key)) added.push_back(record);
    for (const VariationRecord& record : original)
        if (!modifiedIndex.contains(record.key)) deleted.push_back(record);
    std::vector<std::pair<VariationRecord, VariationRecord>> changed;
    for (size_t m = 0; m < modified.size(); ++m) {
        auto found = originalIndex.find(modified[m].key);
        if (found != originalIndex.end() && RecordsDiffer(modified[m], original[found->second]))
            changed.emplace_back(modified[m], original[found->second]);
    }
    if (gJsonReport != nullptr || !gIgnoreRules.empty() || dumper.IsCountingPass())
        FilterVariationRecords(dumper, what, added, deleted, changed);

    std::string plural(what);
    if (!added.empty()) {
        dumper.PrintLine("\t### Added " + plural + " (in modified font and not original font):", true);
        DumpVariationRecords(dumper, 1, added);
        dumper.PrintLine("", true);
    }
    if (!deleted.empty()) {
        dumper.PrintLine("\t### Deleted " + plural + " (in original font but not in modified font):", true);
        DumpVariationRecords(dumper, 1, deleted);
        dumper.PrintLine("", true);
    }
    if (!changed.empty()) {
        dumper.PrintLine(ChangedHeading(what), true);
        for (const auto& [m, o] : changed) PrintChangedRecord(dumper, 1, m, o);
        dumper.PrintLine("", true);
    }
    return !added.empty() || !deleted.empty() || !changed.empty();
}

void PrintBudgetSpent(TTableDumper& dumper) {
    dumper.PrintLine("\t### The rest is not shown: the table asks for far more work than its size can hold", true);
}

VariationRecords StoreRegionRecords(const VellItemVariationStore& store, const std::vector<VellTag>& axisTags) {
    VariationRecords records;
    const VellVariationRegionList& regions = store.Regions();
    for (size_t region = 0; region < regions.RegionCount(); ++region) {
        std::string name = "Region " + std::to_string(region);
        VariationRecord& record = records.emplace_back(VariationRecord{name, name, {}});
        for (size_t axis = 0; axis < regions.AxisCount(); ++axis) {
            VellRegionAxis coordinates = regions.Axis(region, axis);
            record.Field(AxisText(axisTags, axis), "peak " + F2Dot14Text(coordinates.peak) + " (" +
                                                       F2Dot14Text(coordinates.start) + " to " +
                                                       F2Dot14Text(coordinates.end) + ")");
            // An axis without a peak leaves the region's scalar as it is, as an axis
            // the other font's store does not span would.
            record.fields.back().sameWhenAbsent = coordinates.peak == 0;
        }
    }
    return records;
}

VariationRecords StoreDeltaSetRecords(const VellItemVariationStore& store, VariationBudget& budget) {
    VariationRecords records;
    for (size_t outer = 0; outer < store.DataCount(); ++outer) {
        VellItemVariationData data = store.Data(outer);
        for (size_t inner = 0; inner < data.ItemCount(); ++inner) {
            if (!budget.Spend(1 + data.RegionIndexes().size())) return records;
            std::string name = "Delta set " + std::to_string(outer) + ", item " + std::to_string(inner);
            VellDeltaSet set{data.RegionIndexes(), data.DeltaSet(inner)};
            records.push_back(VariationRecord{name, name, {}}.Field("Deltas", DeltaSetText(set)));
        }
    }
    return records;
}

namespace {

VariationRecords StoreDataRecords(const VellItemVariationStore& store) {
    VariationRecords records;
    for (size_t outer = 0; outer < store.DataCount(); ++outer) {
        VellItemVariationData data = store.Data(outer);
        std::string indexes;
        for (uint16_t index : data.RegionIndexes()) indexes += (indexes.empty() ? "" : " ") + std::to_string(index);
        std::string name = "Item variation data " + std::to_string(outer);
        std::string wordCount;
        AppendHex(wordCount, data.WordDeltaCount(), 4);
        records.push_back(VariationRecord{name, name, {}}
                              .Field("Item count", std::to_string(data.ItemCount()))
                              .Field("Word delta count", "0x" + wordCount)
                              .Field("Region indexes", indexes.empty() ? "none" : indexes));
    }
    return records;
}

}  // namespace

void DumpItemVariationStore(TTableDumper& dumper, VellView bytes, const std::vector<VellTag>& axisTags) {
    VellItemVariationStore store(bytes);
    dumper.PrintUInt16Field(1, "Item variation store format", store.Format(), false);
    dumper.PrintUInt16Field(1, "Region axis count", store.Regions().AxisCount(), false);
    DumpVariationRecords(dumper, 1, StoreRegionRecords(store, axisTags));
    DumpVariationRecords(dumper, 1, StoreDataRecords(store));
    VariationBudget budget(bytes.size());
    DumpVariationRecords(dumper, 1, StoreDeltaSetRecords(store, budget));
    if (budget.Spent()) PrintBudgetSpent(dumper);
}

void CompareItemVariationStores(TTableDumper& dumper, VellView modifiedBytes, const std::vector<VellTag>& modifiedAxes,
                                VellView originalBytes, const std::vector<VellTag>& originalAxes) {
    VellItemVariationStore modified(modifiedBytes), original(originalBytes);
    if (modified.Format() != original.Format() &&
        dumper.ShowsChange("itemVariationStoreFormat", FieldKind::UInt16, modified.Format(), original.Format())) {
        dumper.PrintUInt16Field(1, ModLabel("Item variation store format"), modified.Format(), false);
        dumper.PrintUInt16Field(1, OrigLabel("Item variation store format"), original.Format(), false);
    }
    CompareVariationRecords(dumper, "regions", StoreRegionRecords(modified, modifiedAxes),
                            StoreRegionRecords(original, originalAxes));
    CompareVariationRecords(dumper, "item variation data", StoreDataRecords(modified), StoreDataRecords(original));
    VariationBudget budget(modifiedBytes.size() + originalBytes.size());
    CompareVariationRecords(dumper, "delta sets", StoreDeltaSetRecords(modified, budget),
                            StoreDeltaSetRecords(original, budget));
    if (budget.Spent()) PrintBudgetSpent(dumper);
}

void CompareField(TTableDumper& dumper, int indent, const VariationField& modified, const VariationField& original) {
    if (modified.Compared() == original.Compared()) return;
    if (!dumper.ShowsDifference(DifferenceKind::Changed, modified.label, [&](JsonWriter& writer) {
            writer.Key("original");
            WriteValueText(writer, original.value);
            writer.Key("modified");
            WriteValueText(writer, modified.value);
        }))
        return;
    dumper.PrintStringField(indent, ModLabel(modified.label), modified.value);
    dumper.PrintStringField(indent, OrigLabel(original.label), original.value);
}

std::string HexText(uint16_t value) {
    std::string text = "0x";
    AppendHex(text, value, 4);
    return text;
}
