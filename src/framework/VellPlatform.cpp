#include "framework/VellPlatform.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

constexpr int64_t kSecondsPerDay = 86400;

// Days from 1970-01-01 to a civil date, inverted: the proleptic Gregorian
// calendar in plain integer arithmetic.
VellDate CivilFromDays(int64_t days) {
    days += 719468;
    int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    int64_t dayOfEra = days - era * 146097;
    int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    int64_t monthPrime = (5 * dayOfYear + 2) / 153;
    VellDate date;
    date.day = static_cast<int>(dayOfYear - (153 * monthPrime + 2) / 5 + 1);
    date.month = static_cast<int>(monthPrime < 10 ? monthPrime + 3 : monthPrime - 9);
    date.year = static_cast<int>(yearOfEra + era * 400 + (date.month <= 2 ? 1 : 0));
    return date;
}

// The user's language as a two- or three-letter code ("fr" from "fr_FR.UTF-8").
std::string UserLanguage() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') continue;
        std::string locale(value);
        size_t end = locale.find_first_of("_.@");
        return locale.substr(0, end);
    }
    return "";
}

std::string ExecutableDirectory() {
    char path[PATH_MAX];
    ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    if (length <= 0) return "";
    std::string text(path, static_cast<size_t>(length));
    size_t slash = text.rfind('/');
    return slash == std::string::npos ? "" : text.substr(0, slash);
}

// A quoted string of a .strings file starting at text[at] == '"'; handles \" and \\.
bool ReadQuoted(const std::string& text, size_t& at, std::string* out) {
    if (at >= text.size() || text[at] != '"') return false;
    out->clear();
    for (++at; at < text.size(); ++at) {
        char c = text[at];
        if (c == '"') {
            ++at;
            return true;
        }
        if (c == '\\' && at + 1 < text.size()) {
            c = text[++at];
            if (c == 'n') c = '\n';
            else if (c == 't') c = '\t';
        }
        out->push_back(c);
    }
    return false;
}

void SkipBlanks(const std::string& text, size_t& at) {
    while (at < text.size() && (text[at] == ' ' || text[at] == '\t' || text[at] == '\r' || text[at] == '\n'))
        ++at;
}

}  // namespace

VellDate SecondsToDate(uint32_t seconds) {
    // 1904-01-01 is 24107 days before 1970-01-01.
    return CivilFromDays(static_cast<int64_t>(seconds) / kSecondsPerDay - 24107);
}

std::string NumToString(int64_t number) { return std::to_string(number); }

bool VellLookUpStringsText(const std::string& text, const std::string& key, std::string* value) {
    size_t at = 0;
    while (at < text.size()) {
        SkipBlanks(text, at);
        if (at >= text.size()) break;
        std::string left, right;
        size_t lineStart = at;
        if (ReadQuoted(text, at, &left)) {
            SkipBlanks(text, at);
            if (at < text.size() && text[at] == '=') {
                ++at;
                SkipBlanks(text, at);
                if (ReadQuoted(text, at, &right) && left == key) {
                    *value = right;
                    return true;
                }
            }
        }
        // Whatever is left of the line (the ';', a comment, a malformed entry) is skipped.
        size_t newline = text.find('\n', std::max(at, lineStart + 1));
        if (newline == std::string::npos) break;
        at = newline + 1;
    }
    return false;
}

std::string VellCopyLocalizedString(const std::string& english, const char* tableName) {
    std::string language = UserLanguage();
    std::string directory = ExecutableDirectory();
    if (language.empty() || directory.empty()) return english;
    std::ifstream file(directory + "/" + language + ".lproj/" + tableName + ".strings");
    if (!file) return english;
    std::stringstream text;
    text << file.rdbuf();
    std::string localized;
    return VellLookUpStringsText(text.str(), english, &localized) ? localized : english;
}

std::string GetIndString(int16_t, int16_t) { return ""; }
