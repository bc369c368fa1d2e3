#include "platform/SignalGuard.h"

namespace ZAV {
namespace Platform {

struct NoSignals::Mask {};

NoSignals::NoSignals() = default;

NoSignals::~NoSignals() = default;

} // namespace Platform
} // namespace ZAV
