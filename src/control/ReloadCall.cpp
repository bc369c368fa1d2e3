#include "control/ReloadCall.h"

#include "control/RequestHandler.h"
#include "platform/Process.h"
#include "platform/Threads.h"

#include <thread>

namespace ZAV {
namespace Log {

/// The thread has a share of the object, since the server may end before.
void ReloadCall::start() {
    Platform::keepLibraryLoaded();
    const Platform::NoSignals noSignals;
    std::thread([call = shared_from_this()] {
        Platform::markAsServing();
        call->answer_ = RequestHandler::answerTo(call->request_);
        call->isOver_.store(true, std::memory_order_release);
    }).detach();
}

} // namespace Log
} // namespace ZAV
