#include "log/LogSession.h"

#include "log/LogManager.h"
#include "log/commands/FailureNotice.h"
#include "platform/CancellationGuard.h"
#include "zav-util/StandardError.h"

#include <exception>

namespace ZAV {
namespace Log {

namespace {

template <typename Configuration>
bool beginWith(const Configuration& configuration) {
    const bool hasInitialised = LogManager::init(configuration);
    if (hasInitialised) {
        FailureNotice::setWanted(true);
    }
    return hasInitialised;
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
