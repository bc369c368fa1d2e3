#include "platform/CancellationGuard.h"

#include <pthread.h>

namespace ZAV {
namespace Platform {

NoCancellation::NoCancellation() noexcept {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
}

NoCancellation::~NoCancellation() {
    pthread_setcancelstate(before_, nullptr);
}

void actOnCancellation() {
    pthread_testcancel();
}

} // namespace Platform
} // namespace ZAV
