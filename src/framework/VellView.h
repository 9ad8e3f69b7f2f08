// VellView: the one way table bytes are read.
//
// Every field of every table is read through this big-endian window. A read that
// falls past the end yields 0 for the missing bytes instead of touching memory
// outside the table, so a short or damaged table prints zeros where a well-formed
// one prints its values, and nothing ever reads outside the block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

class VellView {
public:
    VellView() = default;
    VellView(const uint8_t* data, size_t size) : fData(data), fSize(data ? size : 0) {}
    explicit VellView(std::span<const uint8_t> bytes) : VellView(bytes.data(), bytes.size()) {}

    size_t size() const { return fSize; }
    bool empty() const { return fSize == 0; }
    const uint8_t* data() const { return fData; }

    // Whether length bytes starting at offset lie wholly inside the view.
    bool has(size_t offset, size_t length) const {
        return offset <= fSize && length <= fSize - offset;
    }

    uint8_t u8(size_t offset) const { return offset < fSize ? fData[offset] : 0; }
    int8_t s8(size_t offset) const { return static_cast<int8_t>(u8(offset)); }
    uint16_t u16(size_t offset) const {
        if (has(offset, 2)) return static_cast<uint16_t>(fData[offset] << 8 | fData[offset + 1]);
        return static_cast<uint16_t>(u8(offset) << 8 | u8(offset + 1));
    }
    int16_t s16(size_t offset) const { return static_cast<int16_t>(u16(offset)); }
    uint32_t u24(size_t offset) const {
        return static_cast<uint32_t>(u8(offset)) << 16 | static_cast<uint32_t>(u16(offset + 1));
    }
    uint32_t u32(size_t offset) const {
        return static_cast<uint32_t>(u16(offset)) << 16 | u16(offset + 2);
    }
    int32_t s32(size_t offset) const { return static_cast<int32_t>(u32(offset)); }
    uint64_t u64(size_t offset) const {
        return static_cast<uint64_t>(u32(offset)) << 32 | u32(offset + 4);
    }
    // A four-character tag, as a number whose bytes are in stored order.
    uint32_t tag(size_t offset) const { return u32(offset); }

    // The part of the view from offset on, at most length bytes; empty when offset
    // lies past the end.
    VellView sub(size_t offset, size_t length = SIZE_MAX) const {
        if (offset >= fSize) return {};
        size_t available = fSize - offset;
        return VellView(fData + offset, length < available ? length : available);
    }

    // A count read from a font, capped by how many records of recordSize bytes fit
    // between offset and the end of the view.
    size_t records_that_fit(size_t offset, size_t count, size_t recordSize) const {
        if (offset >= fSize) return 0;
        if (recordSize == 0) return count;
        size_t fit = (fSize - offset) / recordSize;
        return count < fit ? count : fit;
    }

    // A count read from a font, capped by how many records of recordSize bytes
    // begin before the end of the view: a last record cut short still counts, and
    // its missing bytes read as 0.
    size_t records_that_begin(size_t offset, size_t count, size_t recordSize) const {
        if (offset >= fSize) return 0;
        if (recordSize == 0) return count;
        size_t begin = (fSize - offset + recordSize - 1) / recordSize;
        return count < begin ? count : begin;
    }

    std::string_view chars(size_t offset, size_t length) const {
        VellView part = sub(offset, length);
        return {reinterpret_cast<const char*>(part.fData), part.fSize};
    }

    bool operator==(const VellView& other) const;

private:
    const uint8_t* fData = nullptr;
    size_t fSize = 0;
};

inline bool VellView::operator==(const VellView& other) const {
    return fSize == other.fSize && (fSize == 0 || std::memcmp(fData, other.fData, fSize) == 0);
}
