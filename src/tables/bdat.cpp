#include "tables/bdat.h"

#include <algorithm>
#include <array>
#include <new>

#include "VellCmpErrors.h"
#include "framework/VellTables.h"

namespace {

// 'bloc': version, number of strikes, then one 48-byte strike record per strike,
// of which the index subtable array's offset (from the start of 'bloc'), the
// number of index subtables and ppemX are read.
constexpr size_t kStrikeCountOffset = 4;
constexpr size_t kStrikesOffset = 8;
constexpr size_t kStrikeBytes = 48;
constexpr size_t kSubtableArrayOffsetField = 0;
constexpr size_t kSubtableCountField = 8;
constexpr size_t kPpemXField = 44;
// An index subtable array entry: firstGlyph, lastGlyph, and the subtable's offset
// from the start of the array.
constexpr size_t kArrayEntryBytes = 8;
// An index subtable: indexFormat, imageFormat, imageDataOffset (into 'bdat'),
// then per format one 32-bit offset per glyph and one more (1), the image size
// and big glyph metrics (2), or one 16-bit offset per glyph and one more (3).
constexpr size_t kImageFormatField = 2;
constexpr size_t kImageDataOffsetField = 4;
constexpr size_t kSubtableDataField = 8;
constexpr size_t kBigMetricsField = 12;

// The system status of an index out of range.
constexpr int32_t kParamErr = -50;
// No font places more bitmaps than 32 strikes of 65,536 glyphs each. A 'bloc'
// that claims more (strikes that share one full-range subtable can claim
// billions from a few kilobytes) fails as one that places a glyph twice does.
constexpr uint64_t kMostBitmapLocations = uint64_t{1} << 21;
// Bitmaps of this many bytes or more are compared by their location only, and
// their bytes are not listed.
constexpr uint32_t kListedBitmapBytes = 256;

void LocateImage(VellView subtable, uint16_t index, TGlyphBitmapLocation& location) {
    uint32_t imageData = subtable.u32(kImageDataOffsetField);
    switch (location.indexFormat) {
        case 1:
        case 3: {
            // One offset per glyph and one more, 32-bit in format 1 and 16-bit in
            // format 3: each image runs up to the next glyph's.
            auto offsetOf = [&](size_t glyph) -> uint32_t {
                return location.indexFormat == 1 ? subtable.u32(kSubtableDataField + 4 * glyph)
                                                 : subtable.u16(kSubtableDataField + 2 * glyph);
            };
            uint32_t start = offsetOf(index), end = offsetOf(size_t{index} + 1);
            location.offset = imageData + start;
            location.size = end - start;
            break;
        }
        case 2: {
            uint32_t imageSize = subtable.u32(kSubtableDataField);
            location.offset = imageData + imageSize * uint32_t{index};
            location.size = imageSize;
            location.metrics1 = subtable.u32(kBigMetricsField);
            location.metrics2 = subtable.u32(kBigMetricsField + 4);
            break;
        }
        default:
            location.offset = 0;
            location.size = 0;
            break;
    }
}

// A location's reported fields, laid out big-endian for kLocationRows.
using LocationRecord = std::array<uint8_t, 16>;

LocationRecord RecordOf(const TGlyphBitmapLocation& location) {
    LocationRecord record{};
    auto put = [&record](size_t at, uint32_t value, size_t width) {
        for (size_t i = 0; i < width; ++i) record[at + i] = static_cast<uint8_t>(value >> (8 * (width - 1 - i)));
    };
    put(0, location.offset, 4);
    put(4, location.size, 4);
    put(8, location.pointSize, 2);
    put(10, location.glyph, 2);
    put(12, location.indexFormat, 2);
    put(14, location.imageFormat, 2);
    return record;
}

VellView ViewOf(const LocationRecord& record) { return VellView(record.data(), record.size()); }

constexpr FieldRow kLocationRows[] = {
    {8, FieldKind::UInt16, "Point size"},
    {10, FieldKind::UInt16, "Glyph index"},
    {0, FieldKind::Int32Hex, "Offset"},
    {4, FieldKind::Int32, "Size"},
    {12, FieldKind::UInt16, "Index format"},
    {14, FieldKind::UInt16, "Image format"},
};

// Two bitmaps at one position differ in their location, or, when small enough
// to be listed, in their bytes. A bitmap past the end of 'bdat' reads as zeros.
bool BitmapsDiffer(const TGlyphBitmapLocation& modified, VellView modifiedBdat, const TGlyphBitmapLocation& original,
                   VellView originalBdat) {
    LocationRecord modifiedRecord = RecordOf(modified), originalRecord = RecordOf(original);
    for (const FieldRow& row : kLocationRows)
        if (TTableComparator::FieldDiffers(row, ViewOf(modifiedRecord), ViewOf(originalRecord))) return true;
    if (original.size >= kListedBitmapBytes) return false;
    for (size_t i = 0; i < original.size; ++i)
        if (modifiedBdat.u8(modified.offset + i) != originalBdat.u8(original.offset + i)) return true;
    return false;
}

}  // namespace

TBDATTableComparator::TBDATTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out)
    : TTableComparator(modified, original, tag, out),
      fOriginalLocations(BuildLocationList(original.Font())),
      fModifiedLocations(BuildLocationList(modified.Font())) {}

std::vector<TGlyphBitmapLocation> TBDATTableComparator::BuildLocationList(VellFontRef font) {
    ErrorRecord record;
    uint32_t glyphCount = VellCountFontGlyphs(font, &record);
    ThrowIfVellError(record);
    VellHandle bloc = VellGetFontTableHandle(font, VellMakeTag("bloc"), nullptr, &record);
    ThrowIfVellError(record);
    VellView table = VelmView(bloc);
    // Only the strikes the table holds whole are read, and every strike can place
    // each glyph once: a 'bloc' that places more fails. A range ending at glyph
    // 0xFFFF never ends by itself, as its 16-bit glyph counter wraps; this bound
    // is what stops it.
    uint64_t strikes = table.records_that_fit(kStrikesOffset, table.u32(kStrikeCountOffset), kStrikeBytes);
    uint64_t mostEntries = std::min(strikes * glyphCount, kMostBitmapLocations);

    std::vector<TGlyphBitmapLocation> locations;
    try {
        for (uint64_t strikeIndex = 0; strikeIndex < strikes; ++strikeIndex) {
            VellView strike = table.sub(kStrikesOffset + strikeIndex * kStrikeBytes, kStrikeBytes);
            VellView array = table.sub(strike.u32(kSubtableArrayOffsetField));
            size_t subtables = array.records_that_fit(0, strike.u32(kSubtableCountField), kArrayEntryBytes);
            for (size_t entry = 0; entry < subtables; ++entry) {
                size_t at = entry * kArrayEntryBytes;
                uint16_t firstGlyph = array.u16(at), lastGlyph = array.u16(at + 2);
                VellView subtable = array.sub(array.u32(at + 4));
                TGlyphBitmapLocation location;
                location.pointSize = strike.u8(kPpemXField);
                location.indexFormat = subtable.u16(0);
                location.imageFormat = subtable.u16(kImageFormatField);
                for (uint16_t glyph = firstGlyph; glyph <= lastGlyph; ++glyph) {
                    location.glyph = glyph;
                    LocateImage(subtable, static_cast<uint16_t>(glyph - firstGlyph), location);
                    locations.push_back(location);
                    if (locations.size() > mostEntries) throw TVellCmpOSException(kParamErr);
                }
            }
        }
    } catch (const std::bad_alloc&) {
        throw TVellCmpNULLException();
    }
    // Equal offsets keep the order in which 'bloc' lists them.
    std::stable_sort(locations.begin(), locations.end(),
                     [](const TGlyphBitmapLocation& a, const TGlyphBitmapLocation& b) { return a.offset < b.offset; });
    VelmDisposeHandle(bloc, &record);
    ThrowIfVellError(record);
    return locations;
}

void TBDATTableComparator::PrintLocation(const char* heading, const TGlyphBitmapLocation& location, VellView bdat) {
    PrintLine(heading, true);
    LocationRecord record = RecordOf(location);
    DumpFieldRows(3, kLocationRows, ViewOf(record));
    // A bitmap too large to list leaves its data line open: the next line's text
    // follows on it.
    bool listed = location.size < kListedBitmapBytes;
    std::string data = "\t\t\tData:\t";
    if (listed)
        for (size_t i = 0; i < location.size; ++i) data += VellFormat("%02X ", bdat.u8(location.offset + i));
    PrintLine(data, listed);
}

// The tool never runs this: a changed 'bdat' is reported by the 'head' comparator.
int32_t TBDATTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modifiedBdat = GetTableView(), originalBdat = GetOriginalTableView();
    PrintVersionField(0, "Table version", modifiedBdat.u32(0));
    // Positions past the shorter list have nothing to compare with and are not listed.
    size_t common = std::min(fModifiedLocations.size(), fOriginalLocations.size());
    for (size_t position = 0; position < common; ++position) {
        const TGlyphBitmapLocation& original = fOriginalLocations[position];
        const TGlyphBitmapLocation& modified = fModifiedLocations[position];
        if (!BitmapsDiffer(modified, modifiedBdat, original, originalBdat)) continue;
        PrintInt32Field(1, "Index", static_cast<int32_t>(position), false, true);
        PrintLocation("\t\tOld data:", original, originalBdat);
        PrintLocation("\t\tNew data:", modified, modifiedBdat);
    }
    return 0;
}
