#include "log/CommandListener.h"

namespace ZAV {
namespace Log {

CommandListener::~CommandListener() = default;

} // namespace Log
} // namespace ZAV
