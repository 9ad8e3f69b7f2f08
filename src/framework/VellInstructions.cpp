#include "framework/VellInstructions.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <string>

namespace {

// An instruction family: its first opcode, the number of flag bits that select
// its variants (2^bits opcodes from the first), and its mnemonic.
struct Family {
    uint8_t first;
    uint8_t flagBits;
    const char* mnemonic;
};

// The TrueType instruction set, with the two instructions variable fonts brought
// (GETVARIATION and GETDATA). Opcodes no family covers are undefined:
// 0x28, 0x7B, 0x83, 0x84, 0x8F, 0x90 and 0x93 to 0xAF.
constexpr Family kFamilies[] = {
    {0x00, 1, "SVTCA"},     {0x02, 1, "SPVTCA"},   {0x04, 1, "SFVTCA"},       {0x06, 1, "SPVTL"},
    {0x08, 1, "SFVTL"},     {0x0A, 0, "SPVFS"},    {0x0B, 0, "SFVFS"},        {0x0C, 0, "GPV"},
    {0x0D, 0, "GFV"},       {0x0E, 0, "SFVTPV"},   {0x0F, 0, "ISECT"},        {0x10, 0, "SRP0"},
    {0x11, 0, "SRP1"},      {0x12, 0, "SRP2"},     {0x13, 0, "SZP0"},         {0x14, 0, "SZP1"},
    {0x15, 0, "SZP2"},      {0x16, 0, "SZPS"},     {0x17, 0, "SLOOP"},        {0x18, 0, "RTG"},
    {0x19, 0, "RTHG"},      {0x1A, 0, "SMD"},      {0x1B, 0, "ELSE"},         {0x1C, 0, "JMPR"},
    {0x1D, 0, "SCVTCI"},    {0x1E, 0, "SSWCI"},    {0x1F, 0, "SSW"},          {0x20, 0, "DUP"},
    {0x21, 0, "POP"},       {0x22, 0, "CLEAR"},    {0x23, 0, "SWAP"},         {0x24, 0, "DEPTH"},
    {0x25, 0, "CINDEX"},    {0x26, 0, "MINDEX"},   {0x27, 0, "ALIGNPTS"},     {0x29, 0, "UTP"},
    {0x2A, 0, "LOOPCALL"},  {0x2B, 0, "CALL"},     {0x2C, 0, "FDEF"},         {0x2D, 0, "ENDF"},
    {0x2E, 1, "MDAP"},      {0x30, 1, "IUP"},      {0x32, 1, "SHP"},          {0x34, 1, "SHC"},
    {0x36, 1, "SHZ"},       {0x38, 0, "SHPIX"},    {0x39, 0, "IP"},           {0x3A, 1, "MSIRP"},
    {0x3C, 0, "ALIGNRP"},   {0x3D, 0, "RTDG"},     {0x3E, 1, "MIAP"},         {0x40, 0, "NPUSHB"},
    {0x41, 0, "NPUSHW"},    {0x42, 0, "WS"},       {0x43, 0, "RS"},           {0x44, 0, "WCVTP"},
    {0x45, 0, "RCVT"},      {0x46, 1, "GC"},       {0x48, 0, "SCFS"},         {0x49, 1, "MD"},
    {0x4B, 0, "MPPEM"},     {0x4C, 0, "MPS"},      {0x4D, 0, "FLIPON"},       {0x4E, 0, "FLIPOFF"},
    {0x4F, 0, "DEBUG"},     {0x50, 0, "LT"},       {0x51, 0, "LTEQ"},         {0x52, 0, "GT"},
    {0x53, 0, "GTEQ"},      {0x54, 0, "EQ"},       {0x55, 0, "NEQ"},          {0x56, 0, "ODD"},
    {0x57, 0, "EVEN"},      {0x58, 0, "IF"},       {0x59, 0, "EIF"},          {0x5A, 0, "AND"},
    {0x5B, 0, "OR"},        {0x5C, 0, "NOT"},      {0x5D, 0, "DELTAP1"},      {0x5E, 0, "SDB"},
    {0x5F, 0, "SDS"},       {0x60, 0, "ADD"},      {0x61, 0, "SUB"},          {0x62, 0, "DIV"},
    {0x63, 0, "MUL"},       {0x64, 0, "ABS"},      {0x65, 0, "NEG"},          {0x66, 0, "FLOOR"},
    {0x67, 0, "CEILING"},   {0x68, 2, "ROUND"},    {0x6C, 2, "NROUND"},       {0x70, 0, "WCVTF"},
    {0x71, 0, "DELTAP2"},   {0x72, 0, "DELTAP3"},  {0x73, 0, "DELTAC1"},      {0x74, 0, "DELTAC2"},
    {0x75, 0, "DELTAC3"},   {0x76, 0, "SROUND"},   {0x77, 0, "S45ROUND"},     {0x78, 0, "JROT"},
    {0x79, 0, "JROF"},      {0x7A, 0, "ROFF"},     {0x7C, 0, "RUTG"},         {0x7D, 0, "RDTG"},
    {0x7E, 0, "SANGW"},     {0x7F, 0, "AA"},       {0x80, 0, "FLIPPT"},       {0x81, 0, "FLIPRGON"},
    {0x82, 0, "FLIPRGOFF"}, {0x85, 0, "SCANCTRL"}, {0x86, 1, "SDPVTL"},       {0x88, 0, "GETINFO"},
    {0x89, 0, "IDEF"},      {0x8A, 0, "ROLL"},     {0x8B, 0, "MAX"},          {0x8C, 0, "MIN"},
    {0x8D, 0, "SCANTYPE"},  {0x8E, 0, "INSTCTRL"}, {0x91, 0, "GETVARIATION"}, {0x92, 0, "GETDATA"},
    {0xB0, 3, "PUSHB"},     {0xB8, 3, "PUSHW"},    {0xC0, 5, "MDRP"},         {0xE0, 5, "MIRP"},
};

constexpr std::array<const Family*, 256> BuildOpcodeTable() {
    std::array<const Family*, 256> table{};
    for (const Family& family : kFamilies)
        for (unsigned variant = 0; variant < (1u << family.flagBits); ++variant)
            table[family.first + variant] = &family;
    return table;
}

constexpr std::array<const Family*, 256> kOpcodes = BuildOpcodeTable();

constexpr uint8_t kNPUSHB = 0x40;
constexpr uint8_t kNPUSHW = 0x41;
constexpr uint8_t kPUSHB = 0xB0;
constexpr uint8_t kPUSHW = 0xB8;
constexpr size_t kMaxText = kVellInstructionTextSize - 1;
constexpr std::string_view kCutMark = " ...";

// The values a push takes from the instruction stream: how many it announces
// (unknown for an NPUSH cut before its count byte), their width, and where the
// first one starts.
struct Push {
    std::optional<size_t> count;
    size_t width;
    size_t valuesAt;
};

std::optional<Push> PushOf(VellView code) {
    uint8_t opcode = code.u8(0);
    if (opcode == kNPUSHB || opcode == kNPUSHW) {
        std::optional<size_t> count;
        if (code.has(1, 1)) count = code.u8(1);
        return Push{count, opcode == kNPUSHW ? 2u : 1u, 2};
    }
    if (opcode >= kPUSHB && opcode < kPUSHW + 8)
        return Push{static_cast<size_t>(opcode & 7) + 1, opcode >= kPUSHW ? 2u : 1u, 1};
    return std::nullopt;
}

// Bytes the instruction at the start of `code` takes; a push cut short takes the rest.
size_t InstructionSize(VellView code) {
    std::optional<Push> push = PushOf(code);
    size_t size = push ? push->valuesAt + push->count.value_or(0) * push->width : 1;
    return std::min(size, code.size());
}

// The mnemonic and its brackets: the flag bits, most significant first, or a
// push's value count.
std::string InstructionHead(uint8_t opcode, const std::optional<Push>& push) {
    const Family* family = kOpcodes[opcode];
    if (family == nullptr) {
        char unknown[32];
        std::snprintf(unknown, sizeof unknown, "Unknown opcode 0x%02X", opcode);
        return unknown;
    }
    std::string head = std::string(family->mnemonic) + "[";
    if (push) {
        if (push->count) head += std::to_string(*push->count);
    } else {
        for (int bit = family->flagBits - 1; bit >= 0; --bit)
            head.push_back(((opcode - family->first) >> bit & 1) ? '1' : '0');
    }
    return head + "]";
}

// The head and then the pushed values that are there, bytes unsigned and words
// signed; cut at the last value that leaves room for the cut mark when too long.
std::string InstructionText(VellView code) {
    std::optional<Push> push = PushOf(code);
    std::string text = InstructionHead(code.u8(0), push);
    if (!push) return text;
    size_t available = code.size() > push->valuesAt ? (code.size() - push->valuesAt) / push->width : 0;
    size_t shown = std::min(push->count.value_or(0), available);
    size_t lastFit = text.size();
    for (size_t i = 0; i < shown; ++i) {
        size_t at = push->valuesAt + i * push->width;
        int value = push->width == 1 ? code.u8(at) : code.s16(at);
        text += " " + std::to_string(value);
        if (text.size() + kCutMark.size() <= kMaxText) lastFit = text.size();
    }
    if (text.size() > kMaxText) {
        text.resize(lastFit);
        text += kCutMark;
    }
    return text;
}

}  // namespace

uint32_t VellCountInstructions(VellView instructions, uint32_t length, ErrorRecord*) {
    VellView code = instructions.sub(0, length);
    uint32_t count = 0;
    for (size_t at = 0; at < code.size(); at += InstructionSize(code.sub(at))) ++count;
    return count;
}

uint32_t VellDecodeInstructions(VellView instructions, uint32_t length, std::span<uint8_t> text, ErrorRecord* record) {
    VellView code = instructions.sub(0, length);
    if (text.size() < kVellInstructionTextSize || code.empty()) {
        if (record != nullptr) record->code = kVellParamErr;
        if (!text.empty()) text[0] = 0;
        return 0;
    }
    std::string decoded = InstructionText(code.sub(0, InstructionSize(code)));
    text[0] = static_cast<uint8_t>(decoded.size());
    std::copy(decoded.begin(), decoded.end(), text.begin() + 1);
    return static_cast<uint32_t>(InstructionSize(code));
}
