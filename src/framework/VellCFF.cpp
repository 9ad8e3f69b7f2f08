#include "framework/VellCFF.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr uint16_t kCharsetOp = 15;
constexpr uint16_t kCharStringsOp = 17;
constexpr uint16_t kPrivateOp = 18;
constexpr uint16_t kSubrsOp = 19;
constexpr uint16_t kVariationStoreOp = 24;
constexpr uint16_t kROSOp = VellCFFEscaped(30);
constexpr uint16_t kFDArrayOp = VellCFFEscaped(36);
constexpr uint16_t kFDSelectOp = VellCFFEscaped(37);

// An sfnt numbers at most 65,535 glyphs, and a CFF2 DICT holds at most 513 operands.
constexpr uint32_t kMaxGlyphs = 65535;
constexpr size_t kMaxOperands = 513;
constexpr size_t kMaxRealDigits = 64;

// The charsets a Top DICT names by number instead of by offset: 0 is ISOAdobe,
// whose glyph i has string ID i.
constexpr double kLastPredefinedCharset = 2;

// Reads the INDEX at `at`: 'CFF ' counts its objects in 16 bits, 'CFF2' in 32.
VellCFFIndex ReadIndex(VellView table, size_t at, bool cff2) {
    VellCFFIndex index;
    index.table = table;
    size_t countBytes = cff2 ? 4 : 2;
    uint32_t count = cff2 ? table.u32(at) : table.u16(at);
    if (!table.has(at, countBytes)) return index;
    index.end = at + countBytes;
    if (count == 0) return index;
    uint8_t offSize = table.u8(at + countBytes);
    if (offSize < 1 || offSize > 4) return index;
    index.offSize = offSize;
    index.offsetsAt = at + countBytes + 1;
    size_t offsets = table.records_that_fit(index.offsetsAt, size_t{count} + 1, offSize);
    if (offsets < 2) return index;
    index.count = static_cast<uint32_t>(std::min<size_t>(offsets - 1, kMaxGlyphs));
    index.dataAt = index.offsetsAt + size_t{offsets} * offSize - 1;
    size_t last = 0;
    for (uint8_t b = 0; b < offSize; ++b) last = last << 8 | table.u8(index.offsetsAt + size_t{count} * offSize + b);
    index.end = std::min(table.size(), index.dataAt + last);
    return index;
}

size_t ReadOffset(const VellCFFIndex& index, uint32_t i) {
    size_t value = 0;
    for (uint8_t b = 0; b < index.offSize; ++b) value = value << 8 | index.table.u8(index.offsetsAt + size_t{i} * index.offSize + b);
    return value;
}

// A real operand: nibbles of digits, '.', 'E', 'E-' and '-', ended by 0xF.
double ReadReal(VellView dict, size_t* at) {
    std::string text;
    bool ended = false;
    while (!ended && *at < dict.size()) {
        uint8_t byte = dict.u8((*at)++);
        for (uint8_t nibble : {static_cast<uint8_t>(byte >> 4), static_cast<uint8_t>(byte & 0xF)}) {
            if (ended) break;
            if (nibble <= 9) text.push_back(static_cast<char>('0' + nibble));
            else if (nibble == 0xA) text.push_back('.');
            else if (nibble == 0xB) text.push_back('E');
            else if (nibble == 0xC) text.append("E-");
            else if (nibble == 0xE) text.push_back('-');
            else ended = nibble == 0xF;
        }
        if (text.size() > kMaxRealDigits) text.resize(kMaxRealDigits);
    }
    return std::strtod(text.c_str(), nullptr);
}

VellCFFDict ReadDict(VellView dict) {
    VellCFFDict result;
    std::vector<double> operands;
    size_t at = 0;
    while (at < dict.size()) {
        uint8_t b0 = dict.u8(at++);
        double value = 0;
        if (b0 <= 24 && b0 != 28) {
            uint16_t op = b0 == 12 ? VellCFFEscaped(dict.u8(at++)) : b0;
            // 'CFF2' blend leaves its blended defaults for the next operator; they are
            // kept with their deltas so that an edited delta still differs.
            if (op == 23) continue;
            result.entries.push_back({op, std::move(operands)});
            operands.clear();
            continue;
        }
        if (b0 == 28) {
            value = dict.s16(at);
            at += 2;
        } else if (b0 == 29) {
            value = dict.s32(at);
            at += 4;
        } else if (b0 == 30) {
            value = ReadReal(dict, &at);
        } else if (b0 >= 32 && b0 <= 246) {
            value = b0 - 139;
        } else if (b0 >= 247 && b0 <= 250) {
            value = (b0 - 247) * 256 + dict.u8(at++) + 108;
        } else if (b0 >= 251 && b0 <= 254) {
            value = -(b0 - 251) * 256 - dict.u8(at++) - 108;
        } else {
            // 25 to 27, 31 and 255 begin no DICT operand: the rest cannot be read.
            break;
        }
        if (operands.size() < kMaxOperands) operands.push_back(value);
    }
    return result;
}

// An offset operand as a table offset; a negative or fractional one is none.
bool AsOffset(double value, size_t* offset) {
    if (!(value >= 0) || value > 0xFFFFFFFF || value != static_cast<double>(static_cast<uint32_t>(value))) return false;
    *offset = static_cast<uint32_t>(value);
    return true;
}

VellCFFFont ReadFont(VellView table, const VellCFFDict& fontDict, bool cff2) {
    VellCFFFont font;
    font.fontDict = fontDict;
    const VellCFFDictEntry* entry = fontDict.Find(kPrivateOp);
    size_t size = 0, offset = 0;
    if (entry == nullptr || entry->operands.size() < 2 || !AsOffset(entry->operands[0], &size) ||
        !AsOffset(entry->operands[1], &offset) || !table.has(offset, size))
        return font;
    font.privateBytes = table.sub(offset, size);
    font.privateDict = ReadDict(font.privateBytes);
    size_t subrs = 0;
    // Subrs counts from the start of the Private DICT.
    if (font.privateDict.Find(kSubrsOp) != nullptr && AsOffset(font.privateDict.Number(kSubrsOp), &subrs) &&
        subrs > 0 && offset + subrs < table.size()) {
        VellCFFIndex index = ReadIndex(table, offset + subrs, cff2);
        font.localSubrs = table.sub(offset + subrs, index.end - (offset + subrs));
    }
    return font;
}

void ReadFDSelect(VellView table, size_t at, uint32_t glyphs, std::vector<uint16_t>* fdSelect) {
    uint8_t format = table.u8(at);
    if (format == 0) {
        for (uint32_t g = 0; g < glyphs; ++g) (*fdSelect)[g] = table.u8(at + 1 + g);
        return;
    }
    if (format != 3 && format != 4) return;
    // Format 3: 16-bit first glyphs and 8-bit font DICTs; format 4: 32 and 16.
    bool wide = format == 4;
    size_t countBytes = wide ? 4 : 2, rangeBytes = wide ? 6 : 3;
    size_t rangesAt = at + 1 + countBytes;
    size_t ranges = table.records_that_fit(rangesAt, wide ? table.u32(at + 1) : table.u16(at + 1), rangeBytes);
    auto first = [&](size_t r) { return wide ? table.u32(rangesAt + r * rangeBytes) : table.u16(rangesAt + r * rangeBytes); };
    for (size_t r = 0; r < ranges; ++r) {
        uint16_t fd = wide ? table.u16(rangesAt + r * rangeBytes + 4) : table.u8(rangesAt + r * rangeBytes + 2);
        // The range after the last is the sentinel: the glyph count.
        uint32_t end = std::min<uint32_t>(first(r + 1), glyphs);
        for (uint32_t g = first(r); g < end; ++g) (*fdSelect)[g] = fd;
    }
}

void ReadCharset(VellView table, double charsetOperand, uint32_t glyphs, std::vector<uint16_t>* charset) {
    charset->assign(glyphs, 0);
    size_t at = 0;
    if (charsetOperand <= kLastPredefinedCharset || !AsOffset(charsetOperand, &at)) {
        for (uint32_t g = 0; g < glyphs; ++g) (*charset)[g] = static_cast<uint16_t>(g);
        return;
    }
    // Glyph 0 is .notdef (CID 0) and is not listed.
    uint8_t format = table.u8(at);
    uint32_t glyph = 1;
    if (format == 0) {
        for (; glyph < glyphs; ++glyph) (*charset)[glyph] = table.u16(at + 1 + 2 * (glyph - 1));
        return;
    }
    if (format != 1 && format != 2) return;
    size_t rangeBytes = format == 1 ? 3 : 4;
    for (size_t range = at + 1; glyph < glyphs && table.has(range, rangeBytes); range += rangeBytes) {
        uint32_t first = table.u16(range);
        uint32_t left = format == 1 ? table.u8(range + 2) : table.u16(range + 2);
        for (uint32_t k = 0; k <= left && glyph < glyphs; ++k) (*charset)[glyph++] = static_cast<uint16_t>(first + k);
    }
}

struct OperatorName {
    uint16_t op;
    const char* name;
};

constexpr OperatorName kOperatorNames[] = {
    {0, "version"}, {1, "Notice"}, {2, "FullName"}, {3, "FamilyName"}, {4, "Weight"}, {5, "FontBBox"},
    {6, "BlueValues"}, {7, "OtherBlues"}, {8, "FamilyBlues"}, {9, "FamilyOtherBlues"}, {10, "StdHW"},
    {11, "StdVW"}, {13, "UniqueID"}, {14, "XUID"}, {15, "charset"}, {16, "Encoding"}, {17, "CharStrings"},
    {18, "Private"}, {19, "Subrs"}, {20, "defaultWidthX"}, {21, "nominalWidthX"}, {22, "vsindex"},
    {24, "vstore"}, {VellCFFEscaped(0), "Copyright"}, {VellCFFEscaped(1), "isFixedPitch"},
    {VellCFFEscaped(2), "ItalicAngle"}, {VellCFFEscaped(3), "UnderlinePosition"},
    {VellCFFEscaped(4), "UnderlineThickness"}, {VellCFFEscaped(5), "PaintType"},
    {VellCFFEscaped(6), "CharstringType"}, {VellCFFEscaped(7), "FontMatrix"}, {VellCFFEscaped(8), "StrokeWidth"},
    {VellCFFEscaped(9), "BlueScale"}, {VellCFFEscaped(10), "BlueShift"}, {VellCFFEscaped(11), "BlueFuzz"},
    {VellCFFEscaped(12), "StemSnapH"}, {VellCFFEscaped(13), "StemSnapV"}, {VellCFFEscaped(14), "ForceBold"},
    {VellCFFEscaped(17), "LanguageGroup"}, {VellCFFEscaped(18), "ExpansionFactor"},
    {VellCFFEscaped(19), "initialRandomSeed"}, {VellCFFEscaped(20), "SyntheticBase"},
    {VellCFFEscaped(21), "PostScript"}, {VellCFFEscaped(22), "BaseFontName"}, {VellCFFEscaped(23), "BaseFontBlend"},
    {VellCFFEscaped(30), "ROS"}, {VellCFFEscaped(31), "CIDFontVersion"}, {VellCFFEscaped(32), "CIDFontRevision"},
    {VellCFFEscaped(33), "CIDFontType"}, {VellCFFEscaped(34), "CIDCount"}, {VellCFFEscaped(35), "UIDBase"},
    {VellCFFEscaped(36), "FDArray"}, {VellCFFEscaped(37), "FDSelect"}, {VellCFFEscaped(38), "FontName"},
};

}  // namespace

VellCFFIndex VellReadCFFIndex(VellView table, size_t at, bool cff2) { return ReadIndex(table, at, cff2); }

namespace {

constexpr int kMaxSubroutineDepth = 10;
constexpr size_t kMaxCharstringOperators = 65536;
// A charstring may declare at most 96 stems; the masks of a hostile one are cut
// at a length no glyph needs.
constexpr size_t kMaxStems = 96;
constexpr size_t kMaxMaskText = 4096;

void AppendHintNumber(std::string& text, double value) {
    char number[32];
    std::snprintf(number, sizeof number, " %.10g", value);
    text.append(number);
}

// A subroutine number is stored less a bias that depends on how many there are.
int32_t SubroutineBias(uint32_t count) { return count < 1240 ? 107 : count < 33900 ? 1131 : 32768; }

// Reads only what hints need: operands, the stem operators, the masks after
// them (one bit per stem so far), and the subroutine calls that may hold any of
// these. Every other operator just clears the operands.
class HintReader {
public:
    HintReader(const VellCFF& cff, uint16_t fd) {
        fGlobal = VellReadCFFIndex(cff.globalSubrs, 0, false);
        if (fd < cff.fonts.size()) fLocal = VellReadCFFIndex(cff.fonts[fd].localSubrs, 0, false);
    }

    std::string Read(VellView charstring) {
        Run(charstring, 0);
        std::string text;
        for (const std::string* part : {&fHorizontal, &fVertical, &fMasks})
            if (!part->empty()) text.append(text.empty() ? "" : " ").append(*part);
        return text;
    }

private:
    void Stems(std::string& list, const char* name) {
        // An odd count carries the width first.
        size_t first = fStack.size() % 2;
        double edge = 0;
        for (size_t k = first; k + 1 < fStack.size() && list.size() < kMaxMaskText; k += 2) {
            if (list.empty()) list = name;
            edge += fStack[k];
            AppendHintNumber(list, edge);
            edge += fStack[k + 1];
            AppendHintNumber(list, edge);
            fStems = std::min(fStems + 1, kMaxStems);
        }
        fStack.clear();
    }

    void Run(VellView code, int depth) {
        if (depth > kMaxSubroutineDepth) {
            fDone = true;
            return;
        }
        size_t at = 0;
        while (at < code.size() && !fDone) {
            if (++fOperators > kMaxCharstringOperators) {
                fDone = true;
                return;
            }
            uint8_t b0 = code.u8(at++);
            double value = 0;
            if (b0 == 28) {
                value = code.s16(at);
                at += 2;
            } else if (b0 >= 32 && b0 <= 246) {
                value = b0 - 139;
            } else if (b0 >= 247 && b0 <= 250) {
                value = (b0 - 247) * 256 + code.u8(at++) + 108;
            } else if (b0 >= 251 && b0 <= 254) {
                value = -(b0 - 251) * 256 - code.u8(at++) - 108;
            } else if (b0 == 255) {
                value = code.s32(at) / 65536.0;
                at += 4;
            } else {
                switch (b0) {
                    case 1:   // hstem
                    case 18:  // hstemhm
                        Stems(fHorizontal, "hstem");
                        break;
                    case 3:   // vstem
                    case 23:  // vstemhm
                        Stems(fVertical, "vstem");
                        break;
                    case 19:    // hintmask
                    case 20: {  // cntrmask
                        // Operands left before the first mask are a vstem list.
                        if (!fStack.empty()) Stems(fVertical, "vstem");
                        if (fMasks.size() < kMaxMaskText) {
                            fMasks.append(fMasks.empty() ? "" : " ").append(b0 == 19 ? "hintmask " : "cntrmask ");
                            for (size_t bit = 0; bit < fStems; ++bit)
                                fMasks.push_back(code.u8(at + bit / 8) & (0x80 >> bit % 8) ? '1' : '0');
                        }
                        at += (fStems + 7) / 8;
                        fStack.clear();
                        break;
                    }
                    case 10:    // callsubr
                    case 29: {  // callgsubr
                        const VellCFFIndex& subrs = b0 == 10 ? fLocal : fGlobal;
                        if (fStack.empty()) return;
                        double number = fStack.back() + SubroutineBias(subrs.count);
                        fStack.pop_back();
                        if (number < 0 || number >= subrs.count) return;
                        Run(subrs.Object(static_cast<uint32_t>(number)), depth + 1);
                        break;
                    }
                    case 11:  // return
                        return;
                    case 14:  // endchar
                        fDone = true;
                        return;
                    case 12:
                        ++at;
                        fStack.clear();
                        break;
                    default:
                        fStack.clear();
                        break;
                }
                continue;
            }
            if (fStack.size() < 48) fStack.push_back(value);
        }
    }

    VellCFFIndex fGlobal, fLocal;
    std::vector<double> fStack;
    size_t fStems = 0, fOperators = 0;
    bool fDone = false;
    std::string fHorizontal, fVertical, fMasks;
};

}  // namespace

std::string VellCFFHintText(const VellCFF& cff, uint32_t glyph) {
    if (cff.cff2 || glyph >= cff.GlyphCount()) return {};
    return HintReader(cff, cff.fdSelect[glyph]).Read(cff.charStrings.Object(glyph));
}

VellView VellCFFIndex::Object(uint32_t i) const {
    if (i >= count) return {};
    size_t from = ReadOffset(*this, i), to = ReadOffset(*this, i + 1);
    if (from == 0 || to < from || !table.has(dataAt + from, to - from)) return {};
    return table.sub(dataAt + from, to - from);
}

const VellCFFDictEntry* VellCFFDict::Find(uint16_t op) const {
    for (const VellCFFDictEntry& entry : entries)
        if (entry.op == op) return &entry;
    return nullptr;
}

double VellCFFDict::Number(uint16_t op, size_t at, double fallback) const {
    const VellCFFDictEntry* entry = Find(op);
    return entry != nullptr && at < entry->operands.size() ? entry->operands[at] : fallback;
}

std::string VellCFF::String(uint32_t sid) const {
    if (sid < kVellCFFStandardStringCount) return kVellCFFStandardStrings[sid];
    VellView text = strings.Object(static_cast<uint32_t>(sid - kVellCFFStandardStringCount));
    if (sid - kVellCFFStandardStringCount >= strings.count) return "SID " + std::to_string(sid);
    return std::string(text.chars(0, text.size()));
}

bool VellReadCFF(VellView table, bool cff2, VellCFF* cff, std::string* why) {
    *cff = VellCFF{};
    cff->cff2 = cff2;
    uint8_t major = table.u8(0), headerSize = table.u8(2);
    if (major != (cff2 ? 2 : 1) || headerSize < 4 || !table.has(0, headerSize)) {
        *why = cff2 ? "the table does not begin with a 'CFF2' header" : "the table does not begin with a CFF header";
        return false;
    }
    size_t globalSubrsAt = 0;
    if (cff2) {
        uint16_t topDictLength = table.u16(3);
        cff->top = ReadDict(table.sub(headerSize, topDictLength));
        globalSubrsAt = size_t{headerSize} + topDictLength;
    } else {
        VellCFFIndex names = ReadIndex(table, headerSize, false);
        VellView name = names.Object(0);
        cff->fontName = std::string(name.chars(0, name.size()));
        VellCFFIndex topDicts = ReadIndex(table, names.end, false);
        cff->top = ReadDict(topDicts.Object(0));
        cff->strings = ReadIndex(table, topDicts.end, false);
        globalSubrsAt = cff->strings.end;
    }
    VellCFFIndex globalSubrs = ReadIndex(table, globalSubrsAt, cff2);
    cff->globalSubrs = table.sub(globalSubrsAt, globalSubrs.end - std::min(globalSubrs.end, globalSubrsAt));

    size_t at = 0;
    if (!AsOffset(cff->top.Number(kCharStringsOp, 0, 0), &at) || at == 0 ||
        (cff->charStrings = ReadIndex(table, at, cff2)).count == 0) {
        *why = "the Top DICT leads to no CharStrings INDEX";
        return false;
    }
    uint32_t glyphs = cff->charStrings.count;
    if (cff2 && AsOffset(cff->top.Number(kVariationStoreOp, 0, 0), &at) && at > 0)
        cff->variationStore = table.sub(at, size_t{table.u16(at)} + 2);

    cff->cidKeyed = !cff2 && cff->top.Find(kROSOp) != nullptr;
    if (cff2 || cff->cidKeyed) {
        if (AsOffset(cff->top.Number(kFDArrayOp, 0, 0), &at) && at > 0) {
            VellCFFIndex fdArray = ReadIndex(table, at, cff2);
            for (uint32_t fd = 0; fd < fdArray.count; ++fd)
                cff->fonts.push_back(ReadFont(table, ReadDict(fdArray.Object(fd)), cff2));
        }
    } else {
        cff->fonts.push_back(ReadFont(table, cff->top, cff2));
    }
    cff->fdSelect.assign(glyphs, 0);
    if (cff->top.Find(kFDSelectOp) != nullptr && AsOffset(cff->top.Number(kFDSelectOp), &at))
        ReadFDSelect(table, at, glyphs, &cff->fdSelect);
    if (!cff2) ReadCharset(table, cff->top.Number(kCharsetOp, 0, 0), glyphs, &cff->charset);
    return true;
}

bool VellCFFGlyphNames(const VellCFF& cff, std::vector<std::string>* names) {
    names->clear();
    if (cff.charset.empty()) return false;
    names->reserve(cff.charset.size());
    char cid[16];
    for (uint16_t id : cff.charset) {
        if (cff.cidKeyed && names->empty()) {
            names->emplace_back(".notdef");  // CID 0, as in a name-keyed font
        } else if (cff.cidKeyed) {
            std::snprintf(cid, sizeof cid, "cid%05u", static_cast<unsigned>(id));
            names->emplace_back(cid);
        } else {
            names->push_back(cff.String(id));
        }
    }
    return true;
}

bool VellCFFGlyphNames(VellView table, std::vector<std::string>* names) {
    VellCFF cff;
    std::string why;
    if (!VellReadCFF(table, false, &cff, &why)) {
        names->clear();
        return false;
    }
    return VellCFFGlyphNames(cff, names);
}

std::string VellCFFOperatorName(uint16_t op) {
    for (const OperatorName& name : kOperatorNames)
        if (name.op == op) return name.name;
    return op >= VellCFFEscaped(0) ? "operator 12 " + std::to_string(op - VellCFFEscaped(0))
                                   : "operator " + std::to_string(op);
}

bool VellCFFIsOffsetOperator(uint16_t op) {
    return op == kCharsetOp || op == 16 || op == kCharStringsOp || op == kPrivateOp || op == kSubrsOp ||
           op == kVariationStoreOp || op == kFDArrayOp || op == kFDSelectOp;
}

bool VellCFFIsStringOperator(uint16_t op) {
    return op <= 4 || op == VellCFFEscaped(0) || op == VellCFFEscaped(21) || op == VellCFFEscaped(22) ||
           op == VellCFFEscaped(38);
}

bool VellCFFIsDeltaOperator(uint16_t op) {
    return (op >= 6 && op <= 9) || op == VellCFFEscaped(12) || op == VellCFFEscaped(13) || op == VellCFFEscaped(23);
}
