// Readable English texts for the identifiers of 'cmap' and 'name' records:
// platforms, their encodings (scripts), languages and name types. Numbers are the
// framework's, one above the sfnt IDs (platform 4 is the Microsoft platform, name
// code 5 the full name), and 0 reads as "any". An identifier the references do
// not define reads as a text with its sfnt ID, such as "Unknown platform 9" for
// the framework's platform 10. None of these calls fails.
#pragma once

#include <cstdint>
#include <string>

#include "framework/VellTypes.h"

std::string VellPlatformToString(int32_t platform, ErrorRecord* record);
std::string VellScriptToString(int32_t platform, int32_t script, ErrorRecord* record);
std::string VellLanguageToString(int32_t platform, int32_t script, int32_t language, ErrorRecord* record);
std::string VellNameTypeToString(int32_t nameCode, ErrorRecord* record);
