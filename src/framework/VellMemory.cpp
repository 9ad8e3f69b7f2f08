#include "framework/VellMemory.h"

VellHandle VelmNewHandle(std::span<const uint8_t> bytes) {
    auto block = std::make_unique<VellBlock>();
    block->bytes.assign(bytes.begin(), bytes.end());
    return block;
}

uint32_t VelmGetHandleSize(const VellHandle& handle, ErrorRecord* record) {
    if (!handle) {
        if (record) record->code = kVellParamErr;
        return 0;
    }
    return static_cast<uint32_t>(handle->bytes.size());
}

void VelmDisposeHandle(VellHandle& handle, ErrorRecord*) { handle.reset(); }
void VelmDisposePtr(VellHandle& pointer, ErrorRecord*) { pointer.reset(); }
