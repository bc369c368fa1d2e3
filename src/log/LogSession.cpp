#include "log/LogSession.h"

#include "log/LogManager.h"
#include "log/commands/FailureNotice.h"
#include "platform/Threads.h"
#include "zav-util/StandardError.h"

#include <exception>

namespace ZAV {
namespace Log {

namespace {

/// Has failures told from the first one on, which an appender may have while it is set up. A session that is
/// not the first one leaves that as it was.
class WantedNotices {
public:
    WantedNotices() {
        if (!wereWanted_) {
            FailureNotice::setWanted(true);
        }
    }
    ~WantedNotices() {
        if (!isKept_ && !wereWanted_) {
            FailureNotice::setWanted(false);
        }
    }
    WantedNotices(const WantedNotices&) = delete;
    WantedNotices& operator=(const WantedNotices&) = delete;

    bool keepIf(bool isKept) { return isKept_ = isKept; }

private:
    const bool wereWanted_ = FailureNotice::isWanted();
    bool isKept_ = false;
};

template <typename Configuration>
bool beginWith(const Configuration& configuration) {
    WantedNotices notices;
    return notices.keepIf(LogManager::init(configuration));
}

} // namespace

LogSession::LogSession(const std::string& fileName) : hasInitialised_(beginWith(fileName)) {}

LogSession::LogSession(const Util::Properties& properties) : hasInitialised_(beginWith(properties)) {}

LogSession::~LogSession() {
    if (!hasInitialised_) {
        return;
    }
    const Platform::NoCancellation noCancellation; // nothing may be thrown out of here
    try {
        LogManager::flush();
        LogManager::finish();
        FailureNotice::setWanted(false);
    } catch (const std::exception& exception) {
        Util::writeErrorLine(exception.what());
    }
}

} // namespace Log
} // namespace ZAV
