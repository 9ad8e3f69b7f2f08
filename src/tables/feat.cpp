#include "tables/feat.h"

#include <algorithm>
#include <span>
#include <unordered_map>
#include <vector>

namespace {

constexpr size_t kFeatureRecordsOffset = 12;
constexpr size_t kFeatureRecordSize = 12;
constexpr size_t kSettingRecordSize = 4;
constexpr size_t kSettingCountOffset = 2;
constexpr size_t kSettingTableOffset = 4;
constexpr size_t kFeatureFlagsOffset = 8;
constexpr size_t kNameIndexOffset = 10;

// featureNameCount is 16 bits; it prints as any decimal count does.
constexpr FieldRow kFeatHeaderRows[] = {
    {0, FieldKind::Version, "Version"},
    {4, FieldKind::UInt16, "Number of features"},
};
// A feature name record, in the order the listing shows its fields.
constexpr FieldRow kFeatureRows[] = {
    {0, FieldKind::UInt16, "Feature type", "feature"},
    {8, FieldKind::UInt16Hex, "Feature flags", "featureFlags"},
    {10, FieldKind::FontName, "Name", "nameIndex"},
    {2, FieldKind::UInt16, "Selector count", "nSettings"},
};
constexpr FieldRow kSettingRows[] = {
    {0, FieldKind::UInt16, "Selector", "setting"},
    {2, FieldKind::FontName, "Name", "nameIndex"},
};

// Setting tables, counts and offsets are taken as the font states them. On a
// well-formed table every setting record is read once per listing and compared
// at most a few times; a damaged one whose records all claim one setting table,
// or one feature type, would make the report grow with the square of the table.
// So a listing may read and print setting records only up to a multiple of what
// its tables can hold, and sixteen times is far beyond any real font.
constexpr size_t kSettingWorkPerRecord = 16;

class SettingBudget {
public:
    explicit SettingBudget(size_t tableBytes) : fLeft(kSettingWorkPerRecord * (tableBytes / kSettingRecordSize + 1)) {}
    // As many of `wanted` setting records as are left.
    size_t Take(size_t wanted) {
        size_t granted = std::min(wanted, fLeft);
        fLeft -= granted;
        return granted;
    }
    // Whether all of `wanted` were left; what was left is spent either way.
    bool Spend(size_t wanted) { return Take(wanted) == wanted; }
    bool Spent() const { return fLeft == 0; }

private:
    size_t fLeft;
};

// The feature name records of one 'feat', as many as the table holds whole.
class FeatureRecords {
public:
    explicit FeatureRecords(VellView table)
        : fTable(table), fCount(table.records_that_fit(kFeatureRecordsOffset, table.u16(4), kFeatureRecordSize)) {
        for (size_t index = 0; index < fCount; ++index) fByType[Type(index)].push_back(index);
    }

    size_t count() const { return fCount; }
    VellView Record(size_t index) const {
        return fTable.sub(kFeatureRecordsOffset + index * kFeatureRecordSize, kFeatureRecordSize);
    }
    uint16_t Type(size_t index) const { return Record(index).u16(0); }
    // The record's setting records, cut short where the table ends.
    VellView Settings(size_t index) const {
        VellView record = Record(index);
        return fTable.sub(record.u32(kSettingTableOffset),
                          size_t{record.u16(kSettingCountOffset)} * kSettingRecordSize);
    }
    bool HasType(uint16_t type) const { return fByType.contains(type); }
    // The records of one feature type, in stored order.
    const std::vector<size_t>& OfType(uint16_t type) const {
        static const std::vector<size_t> kNone;
        auto found = fByType.find(type);
        return found == fByType.end() ? kNone : found->second;
    }

private:
    VellView fTable;
    size_t fCount;
    std::unordered_map<uint16_t, std::vector<size_t>> fByType;
};

// One feature's block: its record, its settings one level deeper, an empty line.
void DumpFeature(TTableDumper& dumper, int indent, const FeatureRecords& features, size_t index,
                 SettingBudget& budget) {
    dumper.DumpFieldRows(indent, kFeatureRows, features.Record(index));
    VellView settings = features.Settings(index);
    size_t shown = budget.Take(settings.size() / kSettingRecordSize);
    for (size_t k = 0; k < shown; ++k)
        dumper.DumpFieldRows(indent + 1, kSettingRows, settings.sub(k * kSettingRecordSize, kSettingRecordSize));
    dumper.PrintLine("\n", false);
}

// One feature as a --json value: its record's fields and its settings, held to
// the same budget as its listing.
void WriteFeature(JsonWriter& writer, const FeatureRecords& features, size_t index, SettingBudget& budget) {
    auto writeRows = [&writer](std::span<const FieldRow> rows, VellView record) {
        for (const FieldRow& row : rows) {
            writer.Key(row.key);
            WriteFieldValue(writer, row.kind, TTableDumper::FieldBits(row, record));
        }
    };
    writer.StartObject();
    writeRows(kFeatureRows, features.Record(index));
    writer.Key("settings");
    writer.StartArray();
    VellView settings = features.Settings(index);
    size_t shown = budget.Take(settings.size() / kSettingRecordSize);
    for (size_t k = 0; k < shown; ++k) {
        writer.StartObject();
        writeRows(kSettingRows, settings.sub(k * kSettingRecordSize, kSettingRecordSize));
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
}

// A feature only one font has, as an entry under its type; false when the text leaves it out.
bool ShowsLoneFeature(TTableDumper& dumper, DifferenceKind kind, const FeatureRecords& features, size_t index,
                      SettingBudget& budget) {
    return dumper.ShowsDifference(kind, features.Type(index), [&](JsonWriter& writer) {
        writer.Key("value");
        WriteFeature(writer, features, index, budget);
    });
}

// Setting records differ position by position; a position past the end of a cut
// short table reads as zeros.
bool SettingsDiffer(VellView modified, VellView original) {
    for (size_t at = 0; at < std::max(modified.size(), original.size()); ++at)
        if (modified.u8(at) != original.u8(at)) return true;
    return false;
}

// A feature is changed when its setting count, flags or name differ, or, those
// equal, any of its settings does; a reordering of the settings is a change.
bool FeatureChanged(const FeatureRecords& modified, size_t m, const FeatureRecords& original, size_t o) {
    VellView modifiedRecord = modified.Record(m), originalRecord = original.Record(o);
    for (size_t at : {kSettingCountOffset, kFeatureFlagsOffset, kNameIndexOffset})
        if (modifiedRecord.u16(at) != originalRecord.u16(at)) return true;
    return SettingsDiffer(modified.Settings(m), original.Settings(o));
}

}  // namespace

int32_t TFEATTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellView table = GetTableView();
    DumpFieldRows(1, kFeatHeaderRows, table);
    FeatureRecords features(table);
    SettingBudget budget(table.size());
    for (size_t index = 0; index < features.count(); ++index) DumpFeature(*this, 1, features, index, budget);
    return 0;
}

int32_t TFEATTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    FeatureRecords modified(GetTableView()), original(GetOriginalTableView());
    SettingBudget budget(GetTableView().size() + GetOriginalTableView().size());

    PrintLine("### Added features:\n\n", false);
    for (size_t m = 0; m < modified.count(); ++m)
        if (!original.HasType(modified.Type(m)) && ShowsLoneFeature(*this, DifferenceKind::Added, modified, m, budget))
            DumpFeature(*this, 1, modified, m, budget);
    PrintLine("\n### End added features:\n\n", false);

    PrintLine("### Deleted features:\n\n", false);
    for (size_t o = 0; o < original.count(); ++o)
        if (!modified.HasType(original.Type(o)) && ShowsLoneFeature(*this, DifferenceKind::Deleted, original, o, budget))
            DumpFeature(*this, 1, original, o, budget);
    PrintLine("\n### End deleted features:\n\n", false);

    // Features are matched by type alone, so a type the original holds twice is
    // compared, and may be reported, once for each of its records.
    PrintLine("### Changed features:\n\n", false);
    for (size_t m = 0; m < modified.count() && !budget.Spent(); ++m) {
        for (size_t o : original.OfType(modified.Type(m))) {
            size_t compared = std::max(modified.Settings(m).size(), original.Settings(o).size());
            if (!budget.Spend(1 + compared / kSettingRecordSize)) break;
            if (!FeatureChanged(modified, m, original, o)) continue;
            if (!ShowsDifference(DifferenceKind::Changed, modified.Type(m), [&](JsonWriter& writer) {
                    writer.Key("original");
                    WriteFeature(writer, original, o, budget);
                    writer.Key("modified");
                    WriteFeature(writer, modified, m, budget);
                }))
                continue;
            PrintUInt16Field(1, "Changed feature", modified.Type(m), false);
            PrintLine("\tOld data", true);
            DumpFeature(*this, 2, original, o, budget);
            PrintLine("\tNew data", true);
            DumpFeature(*this, 2, modified, m, budget);
        }
    }
    PrintLine("\n### End changed features:\n\n", false);
    return 0;
}
