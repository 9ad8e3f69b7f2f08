// Vell font files: a file reference, the list of fonts a file holds, and the
// table directory of each font.
//
// A file is a bare sfnt (version 0x00010000, 'true', 'OTTO' or 'typ1'), a
// collection ('ttcf', fonts in header order), a resource-fork font file (the
// 'sfnt' resources in map order) or a WOFF or WOFF2 web font, decoded in memory
// to the sfnt or collection it holds. The file is mapped once; tables are copied
// out of it only when a caller asks for one.
#pragma once

#include <any>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/VellTypes.h"
#include "framework/VellView.h"

// A file reference. An empty path is a reference that was never filled in (the
// case of a directory operand), which the font-list call refuses.
struct VellFSSpec {
    std::string path;
};

class VellMappedFile;

struct VellTableEntry {
    VellTag tag = 0;
    uint32_t offset = 0;  // from the start of the font's sfnt data
    uint32_t length = 0;
};

struct VellFont {
    std::shared_ptr<const VellMappedFile> file;
    VellView data;                       // the font's sfnt data; table offsets count from its start
    std::vector<VellTableEntry> tables;  // in the order of the directory as stored
    mutable std::any derived;            // indexes built on first use (glyph names)
    mutable std::any encodings;          // the 'cmap' encoding list, built on first use
    mutable std::any metrics;            // where the horizontal metrics lie, found on first use
};

// A font reference: one font inside an open font file.
using VellFontRef = const VellFont*;

// One entry of a font list; its first field is the font reference that all
// per-font calls take.
struct VellFontListEntry {
    VellFontRef font = nullptr;
};

struct VellFontList {
    std::shared_ptr<const VellMappedFile> file;
    std::vector<std::unique_ptr<VellFont>> fonts;
    std::vector<VellFontListEntry> entries;
};

using VellFontListRef = std::unique_ptr<VellFontList>;

// Opens the file and lists its fonts. On failure returns null with the record's
// code set: kVellIOErr when the file could not be read, kVellNotAFontErr when it
// holds no font (or is a damaged web font), kVellNoFileErr for an unfilled reference.
VellFontListRef VellFSSpecToFontList(const VellFSSpec& fileRef, int32_t flags, uint32_t* count,
                                     ErrorRecord* record);
void VellDisposeAndCloseFontList(uint32_t count, VellFontListRef& list, ErrorRecord* record);
void VellDisposeFontList(VellFontListRef& list, uint32_t count, ErrorRecord* record);

// Lists the fonts held in a block of bytes (the parsing behind VellFSSpecToFontList).
// A failure says why in the record's name text, after the file's path.
VellFontListRef VellMakeFontListFromBytes(std::shared_ptr<const VellMappedFile> file,
                                          ErrorRecord* record);

// A read-only image of a whole file: mapped from disk, or owned bytes (for fonts
// built in memory).
class VellMappedFile {
public:
    // On failure, null with the status and, in words, why.
    static std::shared_ptr<const VellMappedFile> Open(const std::string& path, int32_t* status,
                                                      std::string* why = nullptr);
    static std::shared_ptr<const VellMappedFile> FromBytes(std::vector<uint8_t> bytes, std::string path = {});
    ~VellMappedFile();
    VellMappedFile(const VellMappedFile&) = delete;
    VellMappedFile& operator=(const VellMappedFile&) = delete;

    VellView view() const { return VellView(fData, fSize); }
    // The path the file was opened from; empty for bytes built in memory.
    const std::string& path() const { return fPath; }

private:
    VellMappedFile() = default;
    std::string fPath;
    const uint8_t* fData = nullptr;
    size_t fSize = 0;
    void* fMapping = nullptr;
    std::vector<uint8_t> fOwned;
};
