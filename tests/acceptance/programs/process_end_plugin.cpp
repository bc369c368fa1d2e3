// A module that loads the library into a program that does not link it.

#include "ProcessEndSupport.h"

using namespace ZAV;

/// Logs five numbers.
/// \return whether the library was not initialised before
extern "C" bool logThroughPlugin(const char* directory, int first, bool finish) {
    const bool initialised = TestSupport::initForEnd(directory);
    TestSupport::logNumbers(first, first + 4);
    if (finish) {
        Log::LogManager::finish();
    }
    return initialised;
}
