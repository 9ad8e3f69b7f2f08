#include "VellCmpFonts.h"

#include <algorithm>
#include <optional>

#include "comparators/TTableComparator.h"
#include "dumpers/IgnoreRules.h"
#include "dumpers/TJsonReport.h"
#include "dumpers/TableHandlers.h"
#include "framework/VellTables.h"
#include "html/HtmlPage.h"

// ---- The font diff driver ----

namespace {

// Source lines the driver records before its calls, and for a caught exception.
constexpr int32_t kDiffFontsLine = 74;
constexpr int32_t kDiffFontsNextLine = 75;
constexpr int32_t kComparatorExceptionLine = 194;

// Whether a table's last four bytes are zero from fromByte on: the padding that
// rounds a table up to a multiple of four bytes.
bool TailIsZero(const uint8_t (&lastWord)[4], size_t fromByte) {
    for (size_t i = fromByte; i < 4; ++i)
        if (lastWord[i] != 0) return false;
    return true;
}

// Decides whether a table present in both fonts changed: lengths first, with an
// allowance for the zero padding up to a four-byte boundary, then the bytes.
bool TableChanged(VellFontRef modifiedFont, VellFontRef originalFont, VellTag tag, uint32_t modifiedLength,
                  uint32_t originalLength, ErrorRecord* record, bool* failed) {
    *failed = false;
    bool lengthsEqual = originalLength == modifiedLength;
    uint32_t compareLength = modifiedLength;
    uint8_t lastWord[4] = {};
    if (originalLength > modifiedLength && originalLength - modifiedLength <= 3 && originalLength % 4 == 0) {
        // Only the original's bytes beyond the modified length must be zero.
        VellFindFontTableParts(originalFont, tag, originalLength - 4, 4, lastWord, nullptr, record);
        if ((*failed = ReportFrameworkError(record))) return false;
        if (TailIsZero(lastWord, modifiedLength % 4)) lengthsEqual = true;
    } else if (modifiedLength > originalLength && modifiedLength - originalLength <= 3 &&
               modifiedLength % 4 == 0) {
        // Here the whole last word of the modified table must be zero, not just
        // the bytes beyond the original length; reports have always tested it so.
        VellFindFontTableParts(modifiedFont, tag, modifiedLength - 4, 4, lastWord, nullptr, record);
        if ((*failed = ReportFrameworkError(record))) return false;
        if (TailIsZero(lastWord, 0)) {
            lengthsEqual = true;
            compareLength = originalLength;
        }
    }
    if (!lengthsEqual) return true;
    // Compared in place: only the comparator needs copies of its own.
    VellView modified = VellFontTableView(modifiedFont, tag, record);
    if ((*failed = ReportFrameworkError(record))) return false;
    VellView original = VellFontTableView(originalFont, tag, record);
    if ((*failed = ReportFrameworkError(record))) return false;
    return !(modified.sub(0, compareLength) == original.sub(0, compareLength));
}

// A line of the report's frame; under --json the records alone say it.
void PrintFrameLine(const char* line) {
    if (gJsonReport == nullptr) std::fputs(line, gReportFile);
}

// Lists the tables of `font` that `other` lacks (`kind` says which list): a line
// each, or a record each under --json. A table --ignore names is not listed.
bool ListTablesMissingFrom(VellFontRef font, uint32_t count, VellFontRef other, DifferenceKind kind,
                           ErrorRecord* record) {
    for (uint32_t index = 1; index <= count; ++index) {
        VellTag tag = 0;
        uint32_t length = VellGetFontTable(font, index, nullptr, &tag, record);
        if (ReportFrameworkError(record)) return false;
        uint32_t otherLength = VellFindFontTable(other, tag, nullptr, nullptr, record);
        if (ReportFrameworkError(record)) return false;
        if (otherLength != 0 || (!gIgnoreRules.empty() && TableIgnored(tag))) continue;
        gFontsDiffer = 1;
        if (gJsonReport != nullptr)
            gJsonReport->TableRecord(kind, tag, kind == DifferenceKind::Added ? length : 0,
                                     kind == DifferenceKind::Deleted ? length : 0);
        else
            std::fprintf(gReportFile, "\t'%s' %d bytes\n", VellTagText(tag).c_str(), static_cast<int32_t>(length));
        if (gHtmlPage)
            gHtmlPage->ListTable(kind == DifferenceKind::Added ? TableList::kAdded : TableList::kDeleted, tag, length, 0);
    }
    return true;
}

// Whether a changed table gets its account, or only its tag line, under
// --tables and --exclude-tables.
bool TableGetsAccount(VellTag tag) {
    auto named = [tag](const std::vector<VellTag>& tags) {
        return std::find(tags.begin(), tags.end(), tag) != tags.end();
    };
    return (gAccountTables.empty() || named(gAccountTables)) && !named(gExcludedTables);
}

// Whether a changed table has a difference that no --ignore rule names: its
// comparison run as a counting pass, which prints nothing. Null after a failure,
// reported as the account's own would be.
std::optional<bool> ReportsDifferences(TFontContext& modified, TFontContext& original, VellTag tag,
                                       ErrorRecord* record) {
    try {
        std::unique_ptr<TTableComparator> comparator = MakeTableComparator(modified, original, tag, gReportFile);
        // A table without a comparison ('loca') has no fields to leave out.
        if (!comparator) return true;
        comparator->SetCountingPass();
        comparator->DumpTable();
        return comparator->DifferencesCounted() != 0;
    } catch (const TVellCmpException&) {
        VellSetErrorSource(record, kVellCmpFontsSource, kComparatorExceptionLine);
        record->code = kVellCmpInternalError;
        ReportError(record);
        return std::nullopt;
    }
}

}  // namespace

void DiffFonts(VellFontRef modifiedFont, VellFontRef originalFont, ErrorRecord* record) {
    VellSetErrorSource(record, kVellCmpFontsSource, kDiffFontsLine);
    uint32_t modifiedCount = VellCountFontTables(modifiedFont, record);
    if (ReportFrameworkError(record)) return;
    VellSetErrorSource(record, kVellCmpFontsSource, kDiffFontsNextLine);
    uint32_t originalCount = VellCountFontTables(originalFont, record);
    if (ReportFrameworkError(record)) return;

    PrintFrameLine("##### Tables added (in modified font and not original font)\n");
    if (!ListTablesMissingFrom(modifiedFont, modifiedCount, originalFont, DifferenceKind::Added, record)) return;
    PrintFrameLine("##### End tables added\n\n");
    PrintFrameLine("##### Tables deleted (in original font but not in modified font)\n");
    if (!ListTablesMissingFrom(originalFont, originalCount, modifiedFont, DifferenceKind::Deleted, record)) return;
    PrintFrameLine("#####End tables deleted\n\n");

    PrintFrameLine("##### Tables changed\n");
    // What the comparators ask of each font is read once for the whole pair.
    TFontContext modifiedContext(modifiedFont), originalContext(originalFont);
    for (uint32_t index = 1; index <= modifiedCount; ++index) {
        VellTag tag = 0;
        uint32_t modifiedLength = VellGetFontTable(modifiedFont, index, nullptr, &tag, record);
        if (ReportFrameworkError(record)) return;
        uint32_t originalLength = VellFindFontTable(originalFont, tag, nullptr, nullptr, record);
        if (ReportFrameworkError(record)) return;
        if (originalLength == 0) continue;
        bool failed = false;
        bool changed = TableChanged(modifiedFont, originalFont, tag, modifiedLength, originalLength, record, &failed);
        if (failed) return;
        if (!changed) continue;
        if (!gIgnoreRules.empty()) {
            // A table whose every difference --ignore names is unchanged.
            if (TableIgnored(tag)) continue;
            if (TableHasIgnoredFields(tag)) {
                std::optional<bool> counted = ReportsDifferences(modifiedContext, originalContext, tag, record);
                if (!counted) return;
                if (!*counted) continue;
            }
        }

        gFontsDiffer = 1;
        std::string tagText = VellTagText(tag);
        if (gVerbose) std::fprintf(stderr, "Found a delta in the '%s' tables\n", tagText.c_str());
        if (gHtmlPage) gHtmlPage->ListTable(TableList::kChanged, tag, modifiedLength, originalLength);
        if (gJsonReport != nullptr) {
            gJsonReport->TableRecord(DifferenceKind::Changed, tag, modifiedLength, originalLength);
            if (gSummaryOnly) continue;
        } else if (gSummaryOnly) {
            // Both sizes, as the account's header lines would give them.
            std::fprintf(gReportFile, "\t'%s' %d bytes (%d bytes in the original font)\n", tagText.c_str(),
                         static_cast<int32_t>(modifiedLength), static_cast<int32_t>(originalLength));
            continue;
        }
        if (gJsonReport == nullptr) std::fprintf(gReportFile, "\n\t'%s'\n", tagText.c_str());
        if (!TableGetsAccount(tag)) continue;
        try {
            TAccountCapture account;
            std::unique_ptr<TTableComparator> comparator =
                MakeTableComparator(modifiedContext, originalContext, tag, account.Stream());
            if (comparator) {
                comparator->DumpTable();
                comparator.reset();
                account.Finish();
            }
            if (gHtmlPage) gHtmlPage->AddDrawings(tag, modifiedContext, originalContext);
        } catch (const TVellCmpException&) {
            VellSetErrorSource(record, kVellCmpFontsSource, kComparatorExceptionLine);
            record->code = kVellCmpInternalError;
            ReportError(record);
            return;
        }
    }
    PrintFrameLine("#####End tables changed\n\n");
}

// ---- The registry ----

std::unique_ptr<TTableComparator> MakeTableComparator(TFontContext& modified, TFontContext& original, VellTag tag,
                                                      FILE* out) {
    // Both tables, then what any comparator may ask of either font: a font whose
    // side tables cannot be read fails every changed table alike.
    modified.Table(tag);
    original.Table(tag);
    modified.CheckSideTables();
    original.CheckSideTables();
    if (!modified.HasTable(tag) || !original.HasTable(tag)) return nullptr;

    if (gVerbose) std::fprintf(stderr, "\tAbout to create the comparator\n");
    const TableHandler* handler = FindComparatorHandler(tag);
    std::unique_ptr<TTableComparator> comparator =
        handler ? handler->comparator(modified, original, tag, out)
                : std::make_unique<TTableComparator>(modified, original, tag, out);
    if (gVerbose)
        std::fprintf(stderr, "\tThe comparator == 0x%08lX\n",
                     static_cast<unsigned long>(reinterpret_cast<uintptr_t>(comparator.get())));
    return comparator;
}
