#include "VellCmpFonts.h"

#include <algorithm>

#include "comparators/TTableComparator.h"
#include "framework/VellTables.h"
#include "tables/EBSC.h"
#include "tables/OS2.h"
#include "tables/bdat.h"
#include "tables/cmap.h"
#include "tables/feat.h"
#include "tables/glyf.h"
#include "tables/hdmx.h"
#include "tables/head.h"
#include "tables/hhea_vhea.h"
#include "tables/hmtx_vmtx.h"
#include "tables/hsty.h"
#include "tables/maxp.h"
#include "tables/mort_morx.h"
#include "tables/name.h"
#include "tables/post.h"
#include "tables/prop.h"

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

// Lists the tables of `font` that `other` lacks.
bool ListTablesMissingFrom(VellFontRef font, uint32_t count, VellFontRef other, ErrorRecord* record) {
    for (uint32_t index = 1; index <= count; ++index) {
        VellTag tag = 0;
        uint32_t length = VellGetFontTable(font, index, nullptr, &tag, record);
        if (ReportFrameworkError(record)) return false;
        uint32_t otherLength = VellFindFontTable(other, tag, nullptr, nullptr, record);
        if (ReportFrameworkError(record)) return false;
        if (otherLength == 0) {
            gFontsDiffer = 1;
            std::fprintf(gReportFile, "\t'%s' %d bytes\n", VellTagText(tag).c_str(), static_cast<int32_t>(length));
        }
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

}  // namespace

void DiffFonts(VellFontRef modifiedFont, VellFontRef originalFont, ErrorRecord* record) {
    VellSetErrorSource(record, kVellCmpFontsSource, kDiffFontsLine);
    uint32_t modifiedCount = VellCountFontTables(modifiedFont, record);
    if (ReportFrameworkError(record)) return;
    VellSetErrorSource(record, kVellCmpFontsSource, kDiffFontsNextLine);
    uint32_t originalCount = VellCountFontTables(originalFont, record);
    if (ReportFrameworkError(record)) return;

    std::fprintf(gReportFile, "##### Tables added (in modified font and not original font)\n");
    if (!ListTablesMissingFrom(modifiedFont, modifiedCount, originalFont, record)) return;
    std::fprintf(gReportFile, "##### End tables added\n\n");
    std::fprintf(gReportFile, "##### Tables deleted (in original font but not in modified font)\n");
    if (!ListTablesMissingFrom(originalFont, originalCount, modifiedFont, record)) return;
    std::fprintf(gReportFile, "#####End tables deleted\n\n");

    std::fprintf(gReportFile, "##### Tables changed\n");
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

        gFontsDiffer = 1;
        std::string tagText = VellTagText(tag);
        if (gVerbose) std::fprintf(stderr, "Found a delta in the '%s' tables\n", tagText.c_str());
        if (gSummaryOnly) {
            // Both sizes, as the account's header lines would give them.
            std::fprintf(gReportFile, "\t'%s' %d bytes (%d bytes in the original font)\n", tagText.c_str(),
                         static_cast<int32_t>(modifiedLength), static_cast<int32_t>(originalLength));
            continue;
        }
        std::fprintf(gReportFile, "\n\t'%s'\n", tagText.c_str());
        if (!TableGetsAccount(tag)) continue;
        try {
            std::unique_ptr<TTableComparator> comparator =
                MakeTableComparator(modifiedFont, originalFont, tag, gReportFile);
            if (comparator) {
                comparator->DumpTable();
                comparator.reset();
            }
        } catch (const TVellCmpException&) {
            VellSetErrorSource(record, kVellCmpFontsSource, kComparatorExceptionLine);
            record->code = kVellCmpInternalError;
            ReportError(record);
            return;
        }
    }
    std::fprintf(gReportFile, "#####End tables changed\n\n");
}

// ---- The registry ----

namespace {

// What the comparators need beyond their two tables: glyph counts, both 'post'
// tables and the first 36 bytes of both fonts' 'hhea' and 'vhea'.
struct ComparatorSideData {
    uint32_t modifiedGlyphs = 0, originalGlyphs = 0;
    VellHandle modifiedPost, originalPost;
    VellHandle modifiedHhea, originalHhea, modifiedVhea, originalVhea;
};

constexpr uint32_t kMetricHeaderBytes = 36;
constexpr size_t kLongMetricCountOffset = 34;

ComparatorSideData FetchSideData(VellFontRef modifiedFont, VellFontRef originalFont, ErrorRecord* record) {
    ComparatorSideData side;
    side.modifiedGlyphs = VellCountFontGlyphs(modifiedFont, record);
    ThrowIfVellError(*record);
    side.originalGlyphs = VellCountFontGlyphs(originalFont, record);
    ThrowIfVellError(*record);
    side.modifiedPost = VellGetFontTableHandle(modifiedFont, VellMakeTag("post"), nullptr, record);
    ThrowIfVellError(*record);
    side.originalPost = VellGetFontTableHandle(originalFont, VellMakeTag("post"), nullptr, record);
    ThrowIfVellError(*record);
    auto header = [&](VellFontRef font, VellTag tag) {
        uint32_t size = kMetricHeaderBytes;
        VellHandle bytes = VellGetFontTablePtr(font, tag, &size, record);
        ThrowIfVellError(*record);
        return bytes;
    };
    side.modifiedHhea = header(modifiedFont, VellMakeTag("hhea"));
    side.originalHhea = header(originalFont, VellMakeTag("hhea"));
    side.modifiedVhea = header(modifiedFont, VellMakeTag("vhea"));
    side.originalVhea = header(originalFont, VellMakeTag("vhea"));
    return side;
}

// Releases the side data in the order the registry always has.
void ReleaseSideData(ComparatorSideData& side, ErrorRecord* record) {
    for (VellHandle* pointer : {&side.originalVhea, &side.modifiedVhea, &side.originalHhea, &side.modifiedHhea}) {
        VelmDisposePtr(*pointer, record);
        ThrowIfVellError(*record);
    }
    for (VellHandle* handle : {&side.originalPost, &side.modifiedPost}) {
        VelmDisposeHandle(*handle, record);
        ThrowIfVellError(*record);
    }
}

// numberOfHMetrics or numOfLongVerMetrics from a header's first 36 bytes.
uint16_t LongMetricCount(const VellHandle& header) {
    return VelmView(header).u16(kLongMetricCountOffset);
}

std::unique_ptr<TTableComparator> ConstructComparator(VellTag tag, VellHandle modified, VellHandle original,
                                                      VellFontRef modifiedFont, VellFontRef originalFont,
                                                      const ComparatorSideData& side, FILE* out) {
    switch (tag) {
        case VellMakeTag("EBSC"):
            return std::make_unique<TEBSCTableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("OS/2"):
            return std::make_unique<TOS2TableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("bdat"): {
            // The bitmap comparator is built, so that a damaged 'bloc' fails here,
            // but a changed 'bdat' has always been reported by the 'head'
            // comparator over the two 'bdat' tables.
            ErrorRecord record;
            TBDATTableComparator bitmaps(modifiedFont, VelmHandToHand(modified, &record), originalFont,
                                         VelmHandToHand(original, &record), out);
            return std::make_unique<THEADTableComparator>(std::move(modified), std::move(original), out);
        }
        case VellMakeTag("bhed"):
        case VellMakeTag("head"):
            return std::make_unique<THEADTableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("cmap"):
            return std::make_unique<TCMAPTableComparator>(std::move(modified), modifiedFont, std::move(original),
                                                          originalFont, out);
        case VellMakeTag("feat"):
            return std::make_unique<TFEATTableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("glyf"):
            return std::make_unique<TGLYFTableComparator>(std::move(modified), modifiedFont, std::move(original),
                                                          originalFont, out);
        case VellMakeTag("hdmx"):
            return std::make_unique<THDMXTableComparator>(std::move(modified), side.modifiedPost, side.modifiedGlyphs,
                                                          std::move(original), side.originalPost,
                                                          side.originalGlyphs, out);
        case VellMakeTag("hhea"):
            return std::make_unique<THHEATableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("hmtx"):
            return std::make_unique<THMTXTableComparator>(
                std::move(modified), side.modifiedPost, LongMetricCount(side.modifiedHhea), side.modifiedGlyphs,
                std::move(original), side.originalPost, LongMetricCount(side.originalHhea), side.originalGlyphs, out);
        case VellMakeTag("hsty"):
            return std::make_unique<THSTYTableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("maxp"):
            return std::make_unique<TMAXPTableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("mort"):
            return std::make_unique<TMORTTableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("morx"):
            return std::make_unique<TMORXTableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("name"):
            return std::make_unique<TNAMETableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("post"):
            return std::make_unique<TPOSTTableComparator>(modifiedFont, std::move(modified), originalFont,
                                                          std::move(original), out);
        case VellMakeTag("prop"):
            return std::make_unique<TPROPTableComparator>(modifiedFont, std::move(modified), side.modifiedPost,
                                                          originalFont, std::move(original), side.originalPost,
                                                          out);
        case VellMakeTag("vhea"):
            return std::make_unique<TVHEATableComparator>(std::move(modified), std::move(original), out);
        case VellMakeTag("vmtx"):
            return std::make_unique<TVMTXTableComparator>(
                std::move(modified), side.modifiedPost, LongMetricCount(side.modifiedVhea), side.modifiedGlyphs,
                std::move(original), side.originalPost, LongMetricCount(side.originalVhea), side.originalGlyphs, out);
        default:
            return std::make_unique<TTableComparator>(std::move(modified), std::move(original), out);
    }
}

}  // namespace

std::unique_ptr<TTableComparator> MakeTableComparator(VellFontRef modifiedFont, VellFontRef originalFont,
                                                      VellTag tag, FILE* out) {
    ErrorRecord record;
    ClearUSN(&record);
    VellHandle modified = VellGetFontTableHandle(modifiedFont, tag, nullptr, &record);
    ThrowIfVellError(record);
    VellHandle original = VellGetFontTableHandle(originalFont, tag, nullptr, &record);
    ThrowIfVellError(record);
    ComparatorSideData side = FetchSideData(modifiedFont, originalFont, &record);

    std::unique_ptr<TTableComparator> comparator;
    if (modified && original) {
        if (gVerbose) std::fprintf(stderr, "\tAbout to create the comparator\n");
        // A changed 'loca' gets only the driver's tag line: its offsets say nothing
        // that the 'glyf' comparison does not.
        if (tag != VellMakeTag("loca"))
            comparator = ConstructComparator(tag, std::move(modified), std::move(original), modifiedFont,
                                             originalFont, side, out);
        if (comparator) comparator->SetTableTag(tag);
        if (gVerbose)
            std::fprintf(stderr, "\tThe comparator == 0x%08lX\n",
                         static_cast<unsigned long>(reinterpret_cast<uintptr_t>(comparator.get())));
    }
    ReleaseSideData(side, &record);
    if (comparator) {
        comparator->SetModifiedFont(modifiedFont);
        comparator->SetOriginalFont(originalFont);
    }
    return comparator;
}
