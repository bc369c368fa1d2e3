#include "platform/CriticalSection.h"

#include <new>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

static_assert(sizeof(CRITICAL_SECTION) <= 64 && alignof(CRITICAL_SECTION) <= 16,
              "the storage of a CriticalSection must hold the system's critical section");

CRITICAL_SECTION* sectionIn(unsigned char* storage) {
    return std::launder(reinterpret_cast<CRITICAL_SECTION*>(storage));
}

} // namespace

CriticalSection::CriticalSection() {
    InitializeCriticalSection(new (storage_) CRITICAL_SECTION);
}

CriticalSection::~CriticalSection() {
    DeleteCriticalSection(sectionIn(storage_));
}

void CriticalSection::lock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    EnterCriticalSection(sectionIn(storage_));
}

bool CriticalSection::tryLock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    return TryEnterCriticalSection(sectionIn(storage_)) != 0;
}

void CriticalSection::unlock() ZAV_LOG_NO_THREAD_SAFETY_ANALYSIS {
    LeaveCriticalSection(sectionIn(storage_));
}

} // namespace Platform
} // namespace ZAV
