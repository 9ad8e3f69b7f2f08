#include "framework/VellTypes.h"

std::string VellTagText(VellTag tag) {
    // A tag prints as a C string of its four bytes, so it ends at a NUL byte.
    std::string text;
    for (int i = 0; i < 4; ++i) {
        char c = static_cast<char>(tag >> (24 - 8 * i) & 0xFF);
        if (c == '\0') break;
        text.push_back(c);
    }
    return text;
}

void ClearUSN(ErrorRecord* record) {
    if (record == nullptr) return;
    *record = ErrorRecord{};
}

void VellSetErrorSource(ErrorRecord* record, const char* sourceFile, int32_t line) {
    std::string text(sourceFile);
    if (text.size() > 255) text.resize(255);
    record->sourceFile = text;
    record->sourceLine = line;
}

void VellSetErrorName(ErrorRecord* record, std::string text) {
    // The record holds a length-prefixed text: at most 255 bytes.
    if (text.size() > 255) text.resize(255);
    record->name = std::move(text);
}

const char* VellVersion() { return "Vell 1.0 (portable)"; }
