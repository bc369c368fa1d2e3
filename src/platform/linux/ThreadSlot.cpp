#include "platform/ThreadSlot.h"

#include <pthread.h>

namespace ZAV {
namespace Platform {

ThreadSlot::ThreadSlot(void (*destroy)(void* object)) {
    pthread_key_t key = 0;
    isValid_ = pthread_key_create(&key, destroy) == 0;
    key_ = key;
}

void* ThreadSlot::get() const noexcept {
    return isValid_ ? pthread_getspecific(static_cast<pthread_key_t>(key_)) : nullptr;
}

bool ThreadSlot::set(void* object) noexcept {
    return isValid_ && pthread_setspecific(static_cast<pthread_key_t>(key_), object) == 0;
}

} // namespace Platform
} // namespace ZAV
