#pragma once

#include "zav-util/TimeUtils.h"

#include <cstddef>

namespace ZAV::TestSupport {

/// Sets the clock of tests that link the library's objects; it does not advance by itself.
void setClock(Util::TimeUtils::Time time);

/// \return how often the calling thread has read the clock so far
std::size_t clockReadingsOfThisThread();

} // namespace ZAV::TestSupport
