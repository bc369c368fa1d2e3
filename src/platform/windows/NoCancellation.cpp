#include "platform/NoCancellation.h"

namespace ZAV {
namespace Platform {

NoCancellation::NoCancellation() noexcept : previousState_(0) {}

NoCancellation::~NoCancellation() = default;

} // namespace Platform
} // namespace ZAV
