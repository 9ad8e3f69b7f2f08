// Vell TrueType instructions: counting the instructions of a bytecode stream and
// turning one at a time into the assembly text font engineers read.
#pragma once

#include <cstdint>
#include <span>

#include "framework/VellTypes.h"
#include "framework/VellView.h"

// Room for an instruction's text: a length byte and at most 255 characters.
inline constexpr size_t kVellInstructionTextSize = 256;

// The number of instructions in the first `length` bytes of `instructions` (never
// more than the view holds). A push whose values run past the end is one
// instruction that takes the rest.
uint32_t VellCountInstructions(VellView instructions, uint32_t length, ErrorRecord* record);

// Writes the text of the instruction at the start of `instructions` into `text` as
// a length-prefixed string, and returns the number of bytes the instruction takes;
// no byte at or past `length` is read. The text is the mnemonic with its flag bits
// in brackets ("MIRP[01101]", "SRP0[]"), or for a push the number of values in
// brackets and the values ("PUSHB[2] 12 34"); a text that would pass 255
// characters ends at a value with "...". An opcode no instruction set defines
// reads "Unknown opcode 0x28". `text` must hold kVellInstructionTextSize bytes;
// a smaller buffer or nothing to decode is a parameter error.
uint32_t VellDecodeInstructions(VellView instructions, uint32_t length, std::span<uint8_t> text, ErrorRecord* record);
