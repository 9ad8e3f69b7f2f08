// Vell font names. Name codes, platforms, scripts (encodings) and languages are
// numbered one above the 'name' table's IDs, so 0 can mean "any". Names are
// numbered from 1 in table order. A 'name' table whose directory entry runs past
// the end of the file fails every call here; a font without one has no names.
#pragma once

#include <cstdint>
#include <string>

#include "framework/VellFontFile.h"

uint32_t VellCountFontNames(VellFontRef font, ErrorRecord* record);

// Whether name record `index` can be read as Unicode text; fills in its name code,
// platform, script and language.
bool VellCanGetFontNameAsUnicode(VellFontRef font, uint32_t index, int32_t* code, int32_t* platform,
                                 int32_t* script, int32_t* language, ErrorRecord* record);

// Name record `index` as UTF-8 into *text; returns its length in bytes.
uint32_t VellGetFontNameAsUTF8(VellFontRef font, uint32_t index, int32_t code, int32_t platform,
                               int32_t script, int32_t language, std::string* text,
                               ErrorRecord* record);

// Whether some readable record has this name code (and platform, script and
// language, where they are not 0); its index goes to *index when given.
bool VellCanFindFontNameAsUnicode(VellFontRef font, int32_t code, uint32_t* index, int32_t platform,
                                  int32_t script, int32_t language, ErrorRecord* record);

// The best readable record with this name code as UTF-8; returns its length, and
// fills *text when given. A font without such a record yields empty text and no
// error. With platform, script and language all 0 the choice is, in order:
// Microsoft Unicode in US English, any Unicode-platform record, Macintosh Roman
// English, then the first readable record in table order.
uint32_t VellFindFontNameAsUTF8(VellFontRef font, int32_t code, int32_t platform, int32_t script,
                                int32_t language, std::string* text, uint32_t unused,
                                ErrorRecord* record);

// Text of `bytes` in the sfnt encoding (platform ID, encoding ID, language ID),
// converted to UTF-8; false when the encoding cannot be converted.
bool VellDecodeNameText(uint16_t platformID, uint16_t encodingID, uint16_t languageID,
                        std::string_view bytes, std::string* utf8);
