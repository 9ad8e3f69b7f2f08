#include "framework/VellFontFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "framework/VellWebFonts.h"

namespace {

constexpr uint32_t kSfntTrueType = 0x00010000;
constexpr uint32_t kSfntTrue = VellMakeTag("true");
constexpr uint32_t kSfntOTTO = VellMakeTag("OTTO");
constexpr uint32_t kSfntTyp1 = VellMakeTag("typ1");
constexpr uint32_t kCollection = VellMakeTag("ttcf");
constexpr uint32_t kSfntResource = VellMakeTag("sfnt");

constexpr size_t kOffsetTableSize = 12;
constexpr size_t kDirectoryEntrySize = 16;

bool IsSfntVersion(uint32_t version) {
    return version == kSfntTrueType || version == kSfntTrue || version == kSfntOTTO ||
           version == kSfntTyp1;
}

// Reads the table directory found at headerOffset of `data`, whose start is where
// the font's table offsets count from. A directory that does not fit makes the
// font unreadable; an entry that points outside the data is kept, and the call
// that later reads that table fails.
std::unique_ptr<VellFont> ReadFont(const std::shared_ptr<const VellMappedFile>& file, VellView data,
                                   const char** why, size_t headerOffset = 0) {
    VellView header = data.sub(headerOffset);
    if (!IsSfntVersion(header.u32(0))) {
        *why = "no font begins where its header should be";
        return nullptr;
    }
    uint16_t numTables = header.u16(4);
    if (!header.has(0, kOffsetTableSize) || !header.has(kOffsetTableSize, size_t{numTables} * kDirectoryEntrySize)) {
        *why = "the font's table directory runs past the end of the file (a truncated font?)";
        return nullptr;
    }
    auto font = std::make_unique<VellFont>();
    font->file = file;
    font->data = data;
    font->tables.reserve(numTables);
    for (size_t i = 0; i < numTables; ++i) {
        size_t entry = kOffsetTableSize + i * kDirectoryEntrySize;
        font->tables.push_back({header.tag(entry), header.u32(entry + 8), header.u32(entry + 12)});
    }
    return font;
}

bool ReadCollection(const std::shared_ptr<const VellMappedFile>& file, VellFontList& list, const char** why) {
    VellView bytes = file->view();
    uint32_t numFonts = bytes.u32(8);
    if (numFonts == 0 || bytes.records_that_fit(12, numFonts, 4) != numFonts) {
        *why = "the collection's list of fonts is empty or runs past the end of the file";
        return false;
    }
    for (uint32_t i = 0; i < numFonts; ++i) {
        // Table offsets in a collection count from the start of the file.
        auto font = ReadFont(file, bytes, why, bytes.u32(12 + 4 * i));
        if (!font) {
            if (bytes.u32(12 + 4 * i) >= bytes.size()) *why = "a font of the collection lies past the end of the file";
            return false;
        }
        list.fonts.push_back(std::move(font));
    }
    return true;
}

// A resource-fork font file: a 16-byte header (data offset, map offset, data
// length, map length), resource data, and a map whose type list names the 'sfnt'
// resources. Each resource's data is a 4-byte length followed by an sfnt.
bool ReadResourceFork(const std::shared_ptr<const VellMappedFile>& file, VellFontList& list, const char** why) {
    VellView bytes = file->view();
    uint32_t dataOffset = bytes.u32(0), mapOffset = bytes.u32(4);
    uint32_t dataLength = bytes.u32(8), mapLength = bytes.u32(12);
    *why = bytes.empty() ? "the file is empty"
                         : "not a font file: it begins with no font, collection, web font or resource fork header";
    if (dataOffset < 16 || !bytes.has(dataOffset, dataLength) || !bytes.has(mapOffset, mapLength) ||
        mapLength < 28)
        return false;
    *why = "the resource fork holds no readable 'sfnt' resource";
    VellView data = bytes.sub(dataOffset, dataLength);
    VellView map = bytes.sub(mapOffset, mapLength);
    VellView typeList = map.sub(map.u16(24));
    size_t numTypes = typeList.records_that_fit(2, size_t{typeList.u16(0)} + 1, 8);
    for (size_t t = 0; t < numTypes; ++t) {
        size_t type = 2 + 8 * t;
        if (typeList.tag(type) != kSfntResource) continue;
        VellView references = typeList.sub(typeList.u16(type + 6));
        size_t numResources = references.records_that_fit(0, size_t{typeList.u16(type + 4)} + 1, 12);
        for (size_t r = 0; r < numResources; ++r) {
            uint32_t resourceOffset = references.u24(12 * r + 5);
            if (!data.has(resourceOffset, 4)) return false;
            uint32_t length = data.u32(resourceOffset);
            if (!data.has(resourceOffset + size_t{4}, length)) return false;
            auto font = ReadFont(file, data.sub(resourceOffset + size_t{4}, length), why);
            if (!font) return false;
            list.fonts.push_back(std::move(font));
        }
    }
    return !list.fonts.empty();
}

}  // namespace

std::shared_ptr<const VellMappedFile> VellMappedFile::Open(const std::string& path, int32_t* status,
                                                           std::string* why) {
    *status = kVellNoErr;
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        *status = kVellIOErr;
        if (why) *why = std::strerror(errno);
        return nullptr;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        if (why) *why = S_ISDIR(info.st_mode) ? "a directory, not a font file" : "not a regular file";
        ::close(fd);
        *status = S_ISDIR(info.st_mode) ? kVellNotAFontErr : kVellIOErr;
        return nullptr;
    }
    std::shared_ptr<VellMappedFile> file(new VellMappedFile());
    file->fPath = path;
    if (info.st_size > 0) {
        void* mapping = ::mmap(nullptr, static_cast<size_t>(info.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
        if (mapping == MAP_FAILED) {
            if (why) *why = std::strerror(errno);
            ::close(fd);
            *status = kVellIOErr;
            return nullptr;
        }
        file->fMapping = mapping;
        file->fData = static_cast<const uint8_t*>(mapping);
        file->fSize = static_cast<size_t>(info.st_size);
    }
    ::close(fd);
    return file;
}

std::shared_ptr<const VellMappedFile> VellMappedFile::FromBytes(std::vector<uint8_t> bytes, std::string path) {
    std::shared_ptr<VellMappedFile> file(new VellMappedFile());
    file->fPath = std::move(path);
    file->fOwned = std::move(bytes);
    file->fData = file->fOwned.data();
    file->fSize = file->fOwned.size();
    return file;
}

VellMappedFile::~VellMappedFile() {
    if (fMapping != nullptr) ::munmap(fMapping, fSize);
}

VellFontListRef VellMakeFontListFromBytes(std::shared_ptr<const VellMappedFile> file,
                                          ErrorRecord* record) {
    // A web font is read as the sfnt it wraps; that sfnt is never read as a web
    // font or a resource fork in turn.
    const std::string path = file->path();
    auto fail = [&](const char* why) {
        record->code = kVellNotAFontErr;
        VellSetErrorName(record, path.empty() ? why : path + ": " + why);
        return nullptr;
    };
    const bool webFont = VellIsWebFont(file->view());
    if (webFont) {
        std::vector<uint8_t> sfnt;
        if (const char* why = VellDecodeWebFont(file->view(), &sfnt)) return fail(why);
        file = VellMappedFile::FromBytes(std::move(sfnt), path);
    }
    auto list = std::make_unique<VellFontList>();
    list->file = file;
    VellView bytes = file->view();
    const char* why = "the web font holds no font";
    bool read = false;
    if (bytes.u32(0) == kCollection) {
        read = ReadCollection(file, *list, &why);
    } else if (IsSfntVersion(bytes.u32(0))) {
        auto font = ReadFont(file, bytes, &why);
        read = font != nullptr;
        if (read) list->fonts.push_back(std::move(font));
    } else if (!webFont) {
        read = ReadResourceFork(file, *list, &why);
    }
    if (!read) return fail(why);
    for (const auto& font : list->fonts) list->entries.push_back({font.get()});
    return list;
}

VellFontListRef VellFSSpecToFontList(const VellFSSpec& fileRef, int32_t, uint32_t* count,
                                     ErrorRecord* record) {
    *count = 0;
    if (fileRef.path.empty()) {
        record->code = kVellNoFileErr;
        return nullptr;
    }
    int32_t status = kVellNoErr;
    std::string why;
    auto file = VellMappedFile::Open(fileRef.path, &status, &why);
    if (!file) {
        record->code = status;
        VellSetErrorName(record, fileRef.path + ": " + why);
        return nullptr;
    }
    auto list = VellMakeFontListFromBytes(file, record);
    if (list) *count = static_cast<uint32_t>(list->entries.size());
    return list;
}

void VellDisposeAndCloseFontList(uint32_t, VellFontListRef& list, ErrorRecord*) { list.reset(); }

void VellDisposeFontList(VellFontListRef& list, uint32_t, ErrorRecord*) { list.reset(); }
