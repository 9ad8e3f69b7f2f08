// Platform services the tool relies on: calendar dates from the 1904 epoch,
// number text, localized message strings and indexed string lists.
#pragma once

#include <cstdint>
#include <string>

struct VellDate {
    int year = 1904;
    int month = 1;
    int day = 1;
};

// Seconds since 1904-01-01 00:00 to a calendar date, with no time-zone shift.
VellDate SecondsToDate(uint32_t seconds);

// A number as decimal text.
std::string NumToString(int64_t number);

// The localized form of an English message from the table `tableName` (a file
// "<tableName>.strings" of `"English" = "localized";` lines in "<language>.lproj"
// next to the executable, for the user's language), or the English text itself.
std::string VellCopyLocalizedString(const std::string& english, const char* tableName);

// Parses the text of a .strings file and looks `key` up in it.
bool VellLookUpStringsText(const std::string& text, const std::string& key, std::string* value);

// Entry `index` (1-based) of the string list `listID`; empty when there is none.
std::string GetIndString(int16_t listID, int16_t index);
