#include "log/MessageFilter.h"

namespace ZAV {
namespace Log {

MessageFilter::~MessageFilter() = default;

} // namespace Log
} // namespace ZAV
