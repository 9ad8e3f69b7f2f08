// TTableComparator: the comparison of one table between the modified and the
// original font. It frames every comparison, decides whether the two tables
// differ, and prints the difference of a table without a handler of its own as
// a side-by-side hex listing. Handlers replace only DumpTableDeltas.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "dumpers/TTableDumper.h"

class TTableComparator : public TTableDumper {
public:
    // The dumper part holds the modified table; a null original table throws
    // TVellCmpNULLException.
    TTableComparator(VellHandle modifiedTable, VellHandle originalTable, FILE* out);
    // The handler form: copies of both fonts' tables with this tag, the tag and
    // both fonts set. The contexts outlive the comparator.
    TTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out);
    ~TTableComparator() override;

    // The comparison frame: the original size, the deltas or "No changes", the footer.
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 11; }

    const VellHandle& GetOriginalTableHandle() const { return fOriginalTable; }
    uint32_t GetOriginalTableSize() const;
    VellView GetOriginalTableView() const { return VelmView(fOriginalTable); }
    // The difference of the two tables; here, the side-by-side hex listing.
    virtual int32_t DumpTableDeltas();
    VellFontRef GetOriginalFont() const { return fOriginalFont; }
    // The two fonts' contexts, for comparators built in the handler form.
    TFontContext* GetModifiedContext() const { return GetContext(); }
    TFontContext* GetOriginalContext() const { return fOriginalContext; }
    void SetOriginalFont(VellFontRef font) { fOriginalFont = font; }
    VellFontRef GetModifiedFont() const { return GetFont(); }
    void SetModifiedFont(VellFontRef font) { SetFont(font); }

    // Whether both tables and the report stream are there to compare with.
    bool HasBothTables() const { return GetTableHandle() && fOriginalTable && GetOutputFile() != nullptr; }

    // Whether a field of a fixed layout differs between the two tables.
    static bool FieldDiffers(const FieldRow& row, VellView modified, VellView original);
    // Prints one field as a changed-value pair when it differs: the modified value
    // under "<label> (mod )", then the original under "<label> (orig)".
    void CompareFieldRow(int indent, const FieldRow& row, VellView modified, VellView original);
    void CompareFieldRows(int indent, std::span<const FieldRow> rows, VellView modified, VellView original);

    // The name lines under a reported glyph's heading: one "Name" line when both
    // fonts name it alike, else a line for each font that names it (a side
    // without a name is nullopt), under that side's label; nothing when neither does.
    void PrintGlyphNameLines(const std::optional<std::string>& modified, const std::optional<std::string>& original,
                             std::string_view modifiedLabel, std::string_view originalLabel);

protected:
    // The hex listing's differing rows as --json records of byte ranges.
    int32_t ReportDifferingRanges();
    uint64_t AccountedTableBytes() const override { return GetTableSize() + GetOriginalTableView().size(); }

private:
    VellHandle fOriginalTable;
    VellFontRef fOriginalFont = nullptr;
    TFontContext* fOriginalContext = nullptr;
};

// The labels of a changed-value pair; the blank in " (mod )" lines both values up.
inline std::string ModLabel(std::string_view label) { return std::string(label) + " (mod )"; }
inline std::string OrigLabel(std::string_view label) { return std::string(label) + " (orig)"; }
