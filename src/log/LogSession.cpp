#include "log/LogSession.h"

#include "log/LogManager.h"
#include "platform/CancellationGuard.h"
#include "zav-util/StandardError.h"

#include <exception>

namespace ZAV {
namespace Log {

LogSession::LogSession(const std::string& fileName) : hasInitialised_(LogManager::init(fileName)) {}

LogSession::LogSession(const Util::Properties& properties) : hasInitialised_(LogManager::init(properties)) {}

LogSession::~LogSession() {
    if (!hasInitialised_) {
        return;
    }
    const Platform::NoCancellation noCancellation; // nothing may be thrown out of here
    try {
        LogManager::flush();
        LogManager::finish();
    } catch (const std::exception& exception) {
        Util::writeErrorLine(exception.what());
    }
}

} // namespace Log
} // namespace ZAV
