#include "framework/VellIdentifiers.h"

std::string VellPlatformToString(int32_t platform, ErrorRecord*) {
    return "Unknown platform " + std::to_string(platform);
}

std::string VellScriptToString(int32_t, int32_t script, ErrorRecord*) {
    return "Unknown script " + std::to_string(script);
}

std::string VellLanguageToString(int32_t, int32_t, int32_t language, ErrorRecord*) {
    return "Unknown language " + std::to_string(language);
}

std::string VellNameTypeToString(int32_t nameCode, ErrorRecord*) {
    return "Unknown name type " + std::to_string(nameCode);
}
