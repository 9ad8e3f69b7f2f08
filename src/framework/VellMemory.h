// Vell memory blocks. A handle is an owned byte buffer; null means "no block".
// The classic relocatable-block operations (lock, unlock, move high) are kept by
// name for the callers that list them, and do nothing: a block here never moves.
#pragma once

#include <any>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "framework/VellTypes.h"
#include "framework/VellView.h"

struct VellBlock {
    std::vector<uint8_t> bytes;
    // Data derived from the bytes (such as an index of glyph names), built on first
    // use. A block's bytes never change after it is made, so this never goes stale.
    mutable std::any derived;
};

using VellHandle = std::unique_ptr<VellBlock>;

VellHandle VelmNewHandle(std::span<const uint8_t> bytes);
inline VellView VelmView(const VellHandle& handle) {
    return handle ? VellView(handle->bytes.data(), handle->bytes.size()) : VellView();
}

uint32_t VelmGetHandleSize(const VellHandle& handle, ErrorRecord* record);
void VelmDisposeHandle(VellHandle& handle, ErrorRecord* record);
// Decoded arrays from the framework are blocks too, released the same way.
void VelmDisposePtr(VellHandle& pointer, ErrorRecord* record);
