#include "log/reentrancy/LibraryCall.h"

#include "log/reentrancy/PutOffMessages.h"

namespace ZAV {
namespace Log {

void LibraryCall::end() noexcept {
    if (hasPutOffMessages()) {
        PutOffMessages::instance().writeOwn();
    }
    record_.nestedReports = 0;
}

} // namespace Log
} // namespace ZAV
