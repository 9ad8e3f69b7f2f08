#include "FontFiles.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "VellCmpErrors.h"
#include "framework/VellNames.h"

namespace {

// stat(2) in the classic status codes: not found -43, permission -54, else -36.
int32_t PathMakeRef(const char* path, bool* isDirectory) {
    struct stat info {};
    *isDirectory = false;
    if (::stat(path, &info) == 0) {
        *isDirectory = S_ISDIR(info.st_mode);
        return 0;
    }
    if (errno == ENOENT || errno == ENOTDIR) return kFileNotFound;
    if (errno == EACCES || errno == EPERM) return kFilePermission;
    return kFileIOError;
}

// Where the front end records its framework calls in the error record.
constexpr int32_t kFindFontByNameLine = 358;
constexpr int32_t kFindFontByNameNextLine = 359;
constexpr int32_t kGetFontNameLine = 125;
constexpr int32_t kGetFontNameNextLine = 126;

}  // namespace

int32_t OpenFontFile(const char* path, VellFSSpec* fileRef, bool strict) {
    if (path == nullptr || fileRef == nullptr) return kFileParamError;
    fileRef->path.clear();
    bool isDirectory = false;
    int32_t status = PathMakeRef(path, &isDirectory);
    if (gVerbose) std::fprintf(gReportFile, "\tFSPathMakeRef() == %d\n", status);
    if (!strict && status == kFileNotFound) status = 0;
    if (status == kFileNotFound) {
        std::fprintf(stderr, "##### ERROR:  File %s not found\n", path);
        return status;
    }
    if (status != 0) {
        std::fprintf(stderr, "##### ERROR:  The file system reported error %d when openning %s\n", status, path);
        return status;
    }
    if (isDirectory) {
        // Not an error here: the unfilled reference makes the font-list call fail.
        std::fprintf(stderr, "##### ERROR:  %s is a directory, not a file\n", path);
        return 0;
    }
    fileRef->path = path;
    return 0;
}

uint32_t FindFontByName(const VellFontList* list, uint32_t count, const std::string& name, ErrorRecord* record) {
    VellSetErrorSource(record, kMainSource, kFindFontByNameLine);
    VellSetErrorSource(record, kMainSource, kFindFontByNameNextLine);
    if (gVerbose) std::fprintf(stderr, "Looking for match for font name '%s'\n", name.c_str());
    if (count == 0) return 0;
    uint32_t match = count;
    for (uint32_t f = 0; f < count && match == count; ++f) {
        VellFontRef font = list->entries[f].font;
        uint32_t names = VellCountFontNames(font, record);
        if (ReportFrameworkError(record)) return count;
        for (uint32_t index = 1; index <= names && match == count; ++index) {
            int32_t code = 0, platform = 0, script = 0, language = 0;
            bool readable = VellCanGetFontNameAsUnicode(font, index, &code, &platform, &script, &language, record);
            if (ReportFrameworkError(record)) return count;
            if (!readable || (code != kFullNameCode && code != kPostScriptNameCode)) continue;
            std::string text;
            ErrorRecord untested;
            VellGetFontNameAsUTF8(font, index, code, platform, script, language, &text, &untested);
            if (gVerbose) std::fprintf(stderr, "\tFound '%s'\n", text.c_str());
            if (std::strcmp(text.c_str(), name.c_str()) == 0) match = f;
        }
    }
    return match;
}

void GetFontNameUTF8(VellFontRef font, int32_t nameCode, std::string* text, ErrorRecord* record) {
    VellSetErrorSource(record, kMainSource, kGetFontNameLine);
    VellSetErrorSource(record, kMainSource, kGetFontNameNextLine);
    text->clear();
    VellCanFindFontNameAsUnicode(font, nameCode, nullptr, 0, 0, 0, record);
    if (ReportFrameworkError(record)) return;
    VellFindFontNameAsUTF8(font, nameCode, 0, 0, 0, text, 0, record);
    ReportFrameworkError(record);
}
