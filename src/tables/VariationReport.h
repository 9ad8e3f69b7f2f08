// What the accounts of the variable tables ('fvar', 'avar', 'STAT', 'gvar',
// 'HVAR', 'VVAR', 'MVAR') share: their records as lists of labelled values,
// matched between the fonts by key and reported in sections of added, deleted
// and changed records; coordinates as decimals; and the account of an item
// variation store. Only --opentype reaches them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "comparators/TTableComparator.h"
#include "framework/VellItemVariationStore.h"

// One line of a record: "<label>:\t<value>". A field that is not compared says
// how the record is encoded (shared or private point numbers, say): it prints
// with an added or deleted record, never as a change.
struct VariationField {
    std::string label;
    std::string value;
    bool compared = true;
    // What is compared when it is not the printed value (empty: the value itself).
    std::string comparedText;
    // Whether a record without this field is the same: an instance's coordinate
    // at its axis's default is where a font without that axis places it, and a
    // region's axis without a peak spans the same region as no axis at all.
    bool sameWhenAbsent = false;
    const std::string& Compared() const { return comparedText.empty() ? value : comparedText; }
};
// A name ID and the name behind it in the font's 'name': 256 "Weight". It
// compares by the name where the font has one, so that names renumbered around
// an inserted axis or instance are not changes. A 'name' that cannot be read
// throws TVellCmpVellException.
VariationField NameValue(std::string label, VellFontRef font, uint16_t nameID);

// One record of a table (an axis, an instance, a segment map, a delta set...):
// the key that matches it with the other font's record, the line that heads it,
// and its values, matched between the fonts by label.
struct VariationRecord {
    std::string key;
    std::string heading;
    std::vector<VariationField> fields;

    VariationRecord& Field(std::string label, std::string value) {
        fields.push_back({std::move(label), std::move(value), true, {}, false});
        return *this;
    }
    VariationRecord& Note(std::string label, std::string value) {
        fields.push_back({std::move(label), std::move(value), false, {}, false});
        return *this;
    }
    VariationRecord& NameField(std::string label, VellFontRef font, uint16_t nameID) {
        fields.push_back(NameValue(std::move(label), font, nameID));
        return *this;
    }
};
using VariationRecords = std::vector<VariationRecord>;

// ---- Values as the variable tables' accounts print them ----
// 16.16 and F2Dot14 values as the shortest decimals that read back as the same
// values, as 'head' prints its 16.16 fields under --opentype: "400.0", "0.6".
std::string FixedText(int32_t value);
std::string F2Dot14Text(int16_t value);
// "'wght'"
std::string TagText(VellTag tag);
// The name alone, for matching records by name; empty when the font has none.
std::string NameOnly(VellFontRef font, uint16_t nameID);
// The axis tags of a font's 'fvar', in axis order (empty without one).
std::vector<VellTag> FontAxisTags(TFontContext* font);
// An axis by its tag where 'fvar' names it, else by its index: "'wght'", "axis 3".
std::string AxisText(const std::vector<VellTag>& axisTags, size_t axis);
// A region's axes with a peak: "'wght' 1.000000 (0.000000 to 1.000000)"; "none"
// when no axis has one.
std::string RegionText(const std::vector<VellRegionAxis>& region, const std::vector<VellTag>& axisTags);
// "Glyph 12", and with -p its name from 'post': "Glyph 12 (A)".
std::string GlyphHeading(TFontContext* font, uint32_t glyph);
// Deltas beside their regions: "region 0: -12, region 3: 40"; "none" when empty.
std::string DeltaSetText(const VellDeltaSet& set);
// The deltas a glyph or a value reaches, by region index and without zeros: what
// they add at any location, however the store orders its regions or pads its rows.
std::string ReachedDeltasText(const VellDeltaSet& set);

// Records under a keyed list: when two records of one list share a key, the
// later ones get " #2", " #3"... so that each stays matched with its own.
void MakeKeysUnique(VariationRecords& records);

// ---- Printing ----
// Each record: its heading at indent, its fields one deeper.
void DumpVariationRecords(TTableDumper& dumper, int indent, const VariationRecords& records);
// Sections "### Added <what> ...", "### Deleted <what> ...", "### Changed <what>:",
// each printed only when it has a record; a changed record shows its heading and
// the changed-value pairs of the fields that differ. Returns whether anything was printed.
bool CompareVariationRecords(TTableDumper& dumper, std::string_view what, const VariationRecords& modified,
                             const VariationRecords& original);

// A work budget for accounts whose output a hostile table could make grow far
// beyond its bytes (every glyph mapped onto one long delta set, tuples that all
// reuse one long list of shared points): what they decode or print may come to
// a multiple of the tables' bytes, far beyond what any real font needs.
class VariationBudget {
public:
    explicit VariationBudget(size_t tableBytes) : fLeft(kWorkPerByte * tableBytes + kBaseWork) {}
    // Whether `work` units were left; what was left is spent either way.
    bool Spend(size_t work) {
        bool enough = work <= fLeft;
        fLeft = enough ? fLeft - work : 0;
        return enough;
    }
    bool Spent() const { return fLeft == 0; }

private:
    static constexpr size_t kWorkPerByte = 64;
    static constexpr size_t kBaseWork = 1 << 20;
    size_t fLeft;
};
// The line printed where a budget ran out.
void PrintBudgetSpent(TTableDumper& dumper);

// ---- Item variation stores ('HVAR', 'VVAR', 'MVAR', 'avar' version 2) ----
// The regions, then each ItemVariationData's region indexes and delta sets.
VariationRecords StoreRegionRecords(const VellItemVariationStore& store, const std::vector<VellTag>& axisTags);
VariationRecords StoreDeltaSetRecords(const VellItemVariationStore& store, VariationBudget& budget);
void DumpItemVariationStore(TTableDumper& dumper, VellView store, const std::vector<VellTag>& axisTags);
// The regions that differ, then the delta sets that differ by (outer, inner).
void CompareItemVariationStores(TTableDumper& dumper, VellView modified, const std::vector<VellTag>& modifiedAxes,
                                VellView original, const std::vector<VellTag>& originalAxes);

// A value of a table's own (not of a record) as a changed-value pair, when it differs.
void CompareField(TTableDumper& dumper, int indent, const VariationField& modified, const VariationField& original);
// "0x" and four hexadecimal digits, as flags print.
std::string HexText(uint16_t value);
