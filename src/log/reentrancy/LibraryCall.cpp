#include "log/reentrancy/LibraryCall.h"

#include "log/layout/ShownMessage.h"
#include "log/message/ReusedMessage.h"
#include "log/reentrancy/PutOffMessages.h"

namespace ZAV {
namespace Log {

void LibraryCall::end() noexcept {
    if (hasPutOffMessages()) {
        PutOffMessages::instance().writeOwn();
    }
    record_.nestedReports = 0;
}

void Dispatch::showOpen() noexcept {
    for (const Dispatch* open = threadRecord().dispatch; open != nullptr; open = open->outer_) {
        showOnStandardError(SHOWN_AT_PROCESS_END, open->message_.fields());
    }
}

} // namespace Log
} // namespace ZAV
