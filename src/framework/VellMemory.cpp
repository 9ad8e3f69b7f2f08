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

void VelmHLock(const VellHandle&, ErrorRecord*) {}
void VelmHUnlock(const VellHandle&, ErrorRecord*) {}
void VelmMoveHHi(const VellHandle&, ErrorRecord*) {}

VellHandle VelmHandToHand(const VellHandle& handle, ErrorRecord*) {
    if (!handle) return nullptr;
    return VelmNewHandle(handle->bytes);
}

void VelmDisposeHandle(VellHandle& handle, ErrorRecord*) { handle.reset(); }
void VelmDisposePtr(VellHandle& pointer, ErrorRecord*) { pointer.reset(); }
