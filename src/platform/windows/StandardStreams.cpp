#include "platform/StandardStreams.h"

#include <ostream>

namespace ZAV {
namespace Platform {

void writeToStream(std::ostream& stream, std::string_view text) {
    stream.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
}

} // namespace Platform
} // namespace ZAV
