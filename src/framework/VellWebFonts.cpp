#include "framework/VellWebFonts.h"

#include <woff2/decode.h>
#include <woff2/output.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "framework/VellTypes.h"

namespace {

// Why a web font cannot be read, for the report's line under the error.
constexpr const char* kDamagedWOFF = "a damaged WOFF file: its tables do not decode to what its directory claims";
constexpr const char* kDamagedWOFF2 = "a damaged WOFF2 file: its tables do not decode to what its directory claims";
constexpr const char* kTooLarge = "a web font that would decode to more than 100 times its size, or 256 MB";

constexpr uint32_t kWOFFSignature = VellMakeTag("wOFF");
constexpr uint32_t kWOFF2Signature = VellMakeTag("wOF2");

constexpr size_t kWOFFHeaderSize = 44;
constexpr size_t kWOFFEntrySize = 20;
constexpr size_t kSfntHeaderSize = 12;
constexpr size_t kSfntEntrySize = 16;

uint64_t DecodedSizeLimit(size_t fileSize) {
    return std::min<uint64_t>(uint64_t{fileSize} * kVellMaxWebFontExpansion, kVellMaxDecodedFontBytes);
}

// Tables in an sfnt start on four-byte boundaries.
uint64_t PaddedLength(uint64_t length) { return (length + 3) & ~uint64_t{3}; }

void StoreU16(std::vector<uint8_t>& bytes, size_t offset, uint32_t value) {
    bytes[offset] = static_cast<uint8_t>(value >> 8);
    bytes[offset + 1] = static_cast<uint8_t>(value);
}

void StoreU32(std::vector<uint8_t>& bytes, size_t offset, uint32_t value) {
    StoreU16(bytes, offset, value >> 16);
    StoreU16(bytes, offset + 2, value & 0xFFFF);
}

// The offset table of an sfnt, with the binary-search fields that go with its
// table count.
void StoreOffsetTable(std::vector<uint8_t>& sfnt, uint32_t flavor, uint16_t numTables) {
    uint32_t entrySelector = 0;
    while ((2u << entrySelector) <= numTables) ++entrySelector;
    uint32_t searchRange = (1u << entrySelector) * kSfntEntrySize;
    StoreU32(sfnt, 0, flavor);
    StoreU16(sfnt, 4, numTables);
    StoreU16(sfnt, 6, searchRange);
    StoreU16(sfnt, 8, entrySelector);
    StoreU16(sfnt, 10, numTables * kSfntEntrySize - searchRange);
}

// One table of a WOFF file, as its directory entry describes it.
struct WOFFTable {
    VellTag tag;
    uint32_t checksum;
    uint32_t origLength;
    VellView stored;  // the table itself, or its zlib stream when that is shorter
};

// A WOFF file: a 44-byte header (signature, flavor, length, numTables, reserved,
// totalSfntSize, ...), then 20-byte entries (tag, offset, compLength, origLength,
// origChecksum). Each table's decoded size is known before anything is inflated,
// so the whole sfnt is sized, and bounded, before it is allocated.
const char* DecodeWOFF(VellView file, std::vector<uint8_t>* sfnt) {
    const uint64_t limit = DecodedSizeLimit(file.size());
    const uint16_t numTables = file.u16(12);
    if (file.u32(16) > limit) return kTooLarge;
    if (file.u32(8) != file.size() || numTables == 0 || !file.has(kWOFFHeaderSize, size_t{numTables} * kWOFFEntrySize))
        return kDamagedWOFF;
    std::vector<WOFFTable> tables;
    uint64_t size = kSfntHeaderSize + uint64_t{numTables} * kSfntEntrySize;
    for (size_t i = 0; i < numTables; ++i) {
        size_t entry = kWOFFHeaderSize + i * kWOFFEntrySize;
        uint32_t offset = file.u32(entry + 4), compLength = file.u32(entry + 8), origLength = file.u32(entry + 12);
        // A stream longer than the table it holds is malformed; one running past
        // the end of the file is cut short.
        if (compLength > origLength || !file.has(offset, compLength)) return kDamagedWOFF;
        size += PaddedLength(origLength);
        if (size > limit) return kTooLarge;
        tables.push_back({file.tag(entry), file.u32(entry + 16), origLength, file.sub(offset, compLength)});
    }

    sfnt->assign(static_cast<size_t>(size), 0);
    StoreOffsetTable(*sfnt, file.u32(4), numTables);
    size_t entry = kSfntHeaderSize;
    size_t at = kSfntHeaderSize + size_t{numTables} * kSfntEntrySize;
    for (const WOFFTable& table : tables) {
        StoreU32(*sfnt, entry, table.tag);
        StoreU32(*sfnt, entry + 4, table.checksum);
        StoreU32(*sfnt, entry + 8, static_cast<uint32_t>(at));
        StoreU32(*sfnt, entry + 12, table.origLength);
        entry += kSfntEntrySize;
        if (table.stored.size() == table.origLength) {
            std::copy_n(table.stored.data(), table.stored.size(), sfnt->begin() + static_cast<ptrdiff_t>(at));
        } else {
            // The stream must inflate to exactly the length the entry claims:
            // uncompress refuses to write more, and a shorter result is refused here.
            uLongf produced = table.origLength;
            if (uncompress(sfnt->data() + at, &produced, table.stored.data(), table.stored.size()) != Z_OK ||
                produced != table.origLength) {
                sfnt->clear();
                return kDamagedWOFF;
            }
        }
        at += static_cast<size_t>(PaddedLength(table.origLength));
    }
    return nullptr;
}

// Where the WOFF2 decoder writes the sfnt: a byte vector that refuses to grow
// past the bound, however much the file's transformed tables promise.
class BoundedSfntOutput final : public woff2::WOFF2Out {
public:
    BoundedSfntOutput(std::vector<uint8_t>* bytes, uint64_t limit) : fBytes(bytes), fLimit(limit) {}

    bool Write(const void* data, size_t length) override { return Write(data, fBytes->size(), length); }

    bool Write(const void* data, size_t offset, size_t length) override {
        if (offset > fLimit || length > fLimit - offset) return false;
        size_t end = offset + length;
        if (end > fBytes->capacity())
            fBytes->reserve(static_cast<size_t>(std::min<uint64_t>(std::max(end, 2 * fBytes->capacity()), fLimit)));
        if (end > fBytes->size()) fBytes->resize(end);
        if (length > 0) std::memcpy(fBytes->data() + offset, data, length);
        return true;
    }

    size_t Size() override { return fBytes->size(); }

private:
    std::vector<uint8_t>* fBytes;
    uint64_t fLimit;
};

// A WOFF2 file: its header's totalSfntSize is checked against the bound before
// the decoder allocates anything; the decoder itself checks each table's
// decompressed length against its directory and refuses an implausible
// compression ratio before inflating the Brotli stream.
const char* DecodeWOFF2(VellView file, std::vector<uint8_t>* sfnt) {
    const uint64_t limit = DecodedSizeLimit(file.size());
    const size_t finalSize = woff2::ComputeWOFF2FinalSize(file.data(), file.size());
    if (finalSize == 0) return kDamagedWOFF2;
    if (finalSize > limit) return kTooLarge;
    sfnt->reserve(finalSize);
    BoundedSfntOutput output(sfnt, limit);
    if (woff2::ConvertWOFF2ToTTF(file.data(), file.size(), &output)) return nullptr;
    sfnt->clear();
    return kDamagedWOFF2;
}

}  // namespace

bool VellIsWebFont(VellView file) {
    uint32_t signature = file.u32(0);
    return signature == kWOFFSignature || signature == kWOFF2Signature;
}

const char* VellDecodeWebFont(VellView file, std::vector<uint8_t>* sfnt) {
    sfnt->clear();
    switch (file.u32(0)) {
        case kWOFFSignature: return DecodeWOFF(file, sfnt);
        case kWOFF2Signature: return DecodeWOFF2(file, sfnt);
        default: return "not a web font";
    }
}
