#include "framework/VellTables.h"

#include <algorithm>
#include <cstring>

namespace {

const VellTableEntry* FindEntry(VellFontRef font, VellTag tag) {
    for (const auto& entry : font->tables)
        if (entry.tag == tag) return &entry;
    return nullptr;
}

// The bytes of a directory entry, or false when they lie outside the font's data:
// then the record says which table of which file, as a truncated font shows it.
bool EntryBytes(VellFontRef font, const VellTableEntry& entry, VellView* bytes, ErrorRecord* record) {
    if (font->data.has(entry.offset, entry.length)) {
        *bytes = font->data.sub(entry.offset, entry.length);
        return true;
    }
    if (record != nullptr) {
        record->code = kVellBadTableErr;
        const std::string& path = font->file->path();
        VellSetErrorName(record, (path.empty() ? "" : path + ": ") + "the '" + VellTagText(entry.tag) +
                                     "' table runs past the end of the file (a truncated font?)");
    }
    return false;
}

bool CheckFont(VellFontRef font, ErrorRecord* record) {
    if (font != nullptr) return true;
    record->code = kVellParamErr;
    return false;
}

}  // namespace

uint32_t VellCountFontTables(VellFontRef font, ErrorRecord* record) {
    if (!CheckFont(font, record)) return 0;
    return static_cast<uint32_t>(font->tables.size());
}

uint32_t VellGetFontTable(VellFontRef font, uint32_t index, void*, VellTag* tag, ErrorRecord* record) {
    if (!CheckFont(font, record)) return 0;
    if (index < 1 || index > font->tables.size()) {
        record->code = kVellParamErr;
        return 0;
    }
    const VellTableEntry& entry = font->tables[index - 1];
    if (tag != nullptr) *tag = entry.tag;
    return entry.length;
}

uint32_t VellFindFontTable(VellFontRef font, VellTag tag, void*, void*, ErrorRecord* record) {
    if (!CheckFont(font, record)) return 0;
    const VellTableEntry* entry = FindEntry(font, tag);
    return entry ? entry->length : 0;
}

void VellFindFontTableParts(VellFontRef font, VellTag tag, uint32_t offset, uint32_t length,
                            uint8_t* buffer, void*, ErrorRecord* record) {
    if (!CheckFont(font, record)) return;
    const VellTableEntry* entry = FindEntry(font, tag);
    VellView bytes;
    if (entry == nullptr) {
        record->code = kVellParamErr;
        return;
    }
    if (!EntryBytes(font, *entry, &bytes, record)) return;
    if (!bytes.has(offset, length)) {
        record->code = kVellParamErr;
        return;
    }
    if (length > 0) std::memcpy(buffer, bytes.data() + offset, length);
}

VellHandle VellGetFontTableHandle(VellFontRef font, VellTag tag, uint32_t* size, ErrorRecord* record) {
    if (size != nullptr) *size = 0;
    if (!CheckFont(font, record)) return nullptr;
    const VellTableEntry* entry = FindEntry(font, tag);
    if (entry == nullptr) return nullptr;
    VellView bytes;
    if (!EntryBytes(font, *entry, &bytes, record)) return nullptr;
    if (size != nullptr) *size = entry->length;
    return VelmNewHandle({bytes.data(), bytes.size()});
}

uint32_t VellCountFontGlyphs(VellFontRef font, ErrorRecord* record) {
    if (!CheckFont(font, record)) return 0;
    return VellFontTableView(font, VellMakeTag("maxp"), record).u16(4);
}

VellView VellFontTableView(VellFontRef font, VellTag tag, ErrorRecord* record) {
    if (font == nullptr) {
        if (record != nullptr) record->code = kVellParamErr;
        return {};
    }
    const VellTableEntry* entry = FindEntry(font, tag);
    VellView bytes;
    if (entry == nullptr) return {};
    if (!EntryBytes(font, *entry, &bytes, record)) return {};
    return bytes;
}
