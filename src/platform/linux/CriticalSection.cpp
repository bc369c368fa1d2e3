#include "platform/CriticalSection.h"

#include <new>
#include <pthread.h>

namespace ZAV {
namespace Platform {

namespace {

static_assert(sizeof(pthread_mutex_t) <= 64 && alignof(pthread_mutex_t) <= 16,
              "the storage of a CriticalSection must hold the system's mutex");

pthread_mutex_t* mutexIn(unsigned char* storage) {
    return std::launder(reinterpret_cast<pthread_mutex_t*>(storage));
}

} // namespace

CriticalSection::CriticalSection() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (storage_) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

CriticalSection::~CriticalSection() {
    pthread_mutex_destroy(mutexIn(storage_));
}

void CriticalSection::lock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    pthread_mutex_lock(mutexIn(storage_));
}

bool CriticalSection::tryLock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    return pthread_mutex_trylock(mutexIn(storage_)) == 0;
}

void CriticalSection::unlock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    pthread_mutex_unlock(mutexIn(storage_));
}

} // namespace Platform
} // namespace ZAV
