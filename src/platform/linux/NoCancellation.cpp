#include "platform/NoCancellation.h"

#include <pthread.h>

namespace ZAV {
namespace Platform {

NoCancellation::NoCancellation() noexcept : previousState_(PTHREAD_CANCEL_ENABLE) {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previousState_);
}

NoCancellation::~NoCancellation() {
    pthread_setcancelstate(previousState_, nullptr);
}

} // namespace Platform
} // namespace ZAV
