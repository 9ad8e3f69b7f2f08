// Vell CFF: the structures of a 'CFF ' or 'CFF2' table around its charstrings.
// The header, the INDEXes, the Top DICT, each font DICT with its Private DICT
// and local subroutines, FDSelect and the charset, all read through the
// bounds-checked view. Charstrings themselves are never run here; the outline
// unit leaves that to the font engine.
//
// Every count is capped by what the bytes can hold and by the 65,535 glyphs an
// sfnt can number, and every offset is checked against the table, so a damaged
// table reads as fewer glyphs or empty DICTs, never as a read outside it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/VellView.h"

inline constexpr size_t kVellCFFStandardStringCount = 391;
extern const char* const kVellCFFStandardStrings[kVellCFFStandardStringCount];

// An INDEX: count objects whose bytes lie between offsets that count from the
// byte before the data.
struct VellCFFIndex {
    VellView table;        // the whole table, which the objects must lie inside
    size_t offsetsAt = 0;  // where the offset array starts
    size_t dataAt = 0;     // the byte before the first object
    uint32_t count = 0;
    uint8_t offSize = 0;
    size_t end = 0;  // the byte after the INDEX

    // Object i's bytes; empty when its offsets are out of order or outside the table.
    VellView Object(uint32_t i) const;
};

// A DICT operator: 0 to 24 as stored, escaped ones (12 x) as 1200 + x.
inline constexpr uint16_t VellCFFEscaped(uint16_t op) { return static_cast<uint16_t>(1200 + op); }

struct VellCFFDictEntry {
    uint16_t op = 0;
    std::vector<double> operands;
};

// A DICT's entries in stored order; an operator given twice keeps both.
struct VellCFFDict {
    std::vector<VellCFFDictEntry> entries;
    const VellCFFDictEntry* Find(uint16_t op) const;
    // The operand at `at` of `op`, or `fallback` when the DICT lacks it.
    double Number(uint16_t op, size_t at = 0, double fallback = 0) const;
};

// One font DICT: the Top DICT itself in a name-keyed 'CFF ', an FDArray entry in
// a CID-keyed 'CFF ' or in 'CFF2'.
struct VellCFFFont {
    VellCFFDict fontDict;
    VellCFFDict privateDict;
    VellView privateBytes;  // the Private DICT as stored
    VellView localSubrs;    // the local Subrs INDEX as stored, header and all
};

struct VellCFF {
    bool cff2 = false;
    bool cidKeyed = false;  // the Top DICT has ROS
    std::string fontName;   // the Name INDEX's first entry ('CFF ' only)
    VellCFFDict top;
    VellCFFIndex strings;        // 'CFF ' only
    VellView globalSubrs;        // the Global Subrs INDEX as stored
    VellView variationStore;     // 'CFF2' vstore as stored, its length and all
    VellCFFIndex charStrings;    // one object per glyph
    std::vector<VellCFFFont> fonts;
    std::vector<uint16_t> fdSelect;  // per glyph, an index into fonts (0 in a name-keyed font)
    std::vector<uint16_t> charset;   // per glyph, its string ID or CID; empty in 'CFF2'

    uint32_t GlyphCount() const { return charStrings.count; }
    // A string ID's text: a standard string, one of the String INDEX, or "SID n"
    // for one that names neither.
    std::string String(uint32_t sid) const;
};

// Reads a 'CFF ' (cff2 false) or 'CFF2' table. Returns false, with *why set, when
// the header or the CharStrings INDEX cannot be found; anything else damaged
// reads as missing.
bool VellReadCFF(VellView table, bool cff2, VellCFF* cff, std::string* why);

// Every glyph's name from the charset of a 'CFF ' table, in glyph order: the glyph
// names of a name-keyed font, "cid" and the CID in five digits for a CID-keyed one
// (".notdef" for its glyph 0, as font tools name it).
// False when the table cannot be read or has no charset.
bool VellCFFGlyphNames(VellView cff, std::vector<std::string>* names);
bool VellCFFGlyphNames(const VellCFF& cff, std::vector<std::string>* names);

// An INDEX of the table read at `at` ('CFF2' counts in 32 bits).
VellCFFIndex VellReadCFFIndex(VellView table, size_t at, bool cff2);

// A 'CFF ' glyph's stem hints as text, read from its charstring and the
// subroutines it calls without drawing it: "hstem 10 60 80 110", "vstem ...",
// then each "hintmask" or "cntrmask" as its bits, one per stem. Stems are given
// by their edges, so hints spelled otherwise (hstem or hstemhm, the operands
// split across subroutines) read alike. Empty for a glyph without hints, and for
// 'CFF2'. Subroutine nesting is capped at 10, operators at 65,536.
std::string VellCFFHintText(const VellCFF& cff, uint32_t glyph);

// The label of a DICT operator ("FontBBox", "BlueValues", ...) or "operator 12 x".
std::string VellCFFOperatorName(uint16_t op);
// Whether the operator holds an offset or size inside the table rather than a
// value of the font: such operands change whenever the table is laid out anew.
bool VellCFFIsOffsetOperator(uint16_t op);
// Whether the operator's operands are string IDs.
bool VellCFFIsStringOperator(uint16_t op);
// Whether the operator's operands are stored as deltas (BlueValues, StemSnapH, ...).
bool VellCFFIsDeltaOperator(uint16_t op);
