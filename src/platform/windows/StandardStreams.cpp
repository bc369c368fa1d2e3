#include "platform/StandardStreams.h"

#include <ostream>

namespace ZAV {
namespace Platform {

bool writeToStream(std::ostream& stream, std::string_view text) {
    const std::ios_base::iostate before = stream.rdstate();
    stream.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    const bool isWritten = stream.good();
    if (stream.rdstate() != before) {
        stream.clear(before);
    }
    return isWritten;
}

} // namespace Platform
} // namespace ZAV
