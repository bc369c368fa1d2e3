#include "platform/ThreadSlot.h"

#include "platform/Process.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

ThreadSlot::ThreadSlot(void (*destroy)(void* object)) {
    keepLibraryLoaded(); // the system calls `destroy` when a thread ends
    key_ = FlsAlloc(destroy);
    isValid_ = key_ != FLS_OUT_OF_INDEXES;
}

void* ThreadSlot::get() const noexcept {
    return isValid_ ? FlsGetValue(key_) : nullptr;
}

bool ThreadSlot::set(void* object) noexcept {
    return isValid_ && FlsSetValue(key_, object) != 0;
}

} // namespace Platform
} // namespace ZAV
