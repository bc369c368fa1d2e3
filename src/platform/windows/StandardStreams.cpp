#include "platform/StandardStreams.h"

#include <ostream>

namespace ZAV {
namespace Platform {

void writeToStream(std::ostream& stream, std::string_view text) {
    const std::ios_base::iostate before = stream.rdstate();
    stream.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    if (stream.rdstate() != before) {
        stream.clear(before);
    }
}

} // namespace Platform
} // namespace ZAV
