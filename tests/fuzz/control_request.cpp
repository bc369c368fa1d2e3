// What a client may send: bytes in pieces of any size, cut into lines, each read as a request. Whatever they
// are, a line keeps to its limit, a request has what its kind needs, and an answer to a bad one takes one
// line.

#include "Expect.h"

#include "control/ControlRequest.h"
#include "control/RequestHandler.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

using namespace ZAV::Log;

namespace {

bool isOneLine(const std::string& answer) {
    return std::count_if(answer.begin(), answer.end(),
                         [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }) == 1 &&
           answer.back() == '\n';
}

void readRequest(const std::string& line) {
    try {
        const ControlRequest request = ControlRequest::parse(line);
        const bool needsValue = request.kind() == ControlRequest::LEVEL ||
                                request.kind() == ControlRequest::LEVEL_FOR ||
                                request.kind() == ControlRequest::EXPIRATION;
        const bool needsName = needsValue || request.kind() == ControlRequest::COMMAND;
        EXPECT(request.kind() == ControlRequest::RELOAD || request.name().empty() != needsName);
        EXPECT(!needsValue || !request.value().empty());
        EXPECT(request.name().size() + request.value().size() < line.size());
    } catch (const std::invalid_argument& exception) {
        EXPECT(isOneLine(RequestHandler::refused(exception.what())));
    }
}

} // namespace

/// The first byte is the size of the pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::size_t pieceSize = data[0] == 0 ? LineBuffer::MAX_LENGTH : data[0];
    const std::string sent(reinterpret_cast<const char*>(data) + 1, size - 1);
    LineBuffer lines;
    for (std::size_t at = 0; at < sent.size(); at += pieceSize) {
        lines.append(sent.substr(at, pieceSize));
        for (auto line = lines.next(); line; line = lines.next()) {
            EXPECT(line->text.size() <= LineBuffer::MAX_LENGTH);
            EXPECT(line->text.find('\n') == std::string::npos);
            EXPECT(!line->isTooLong || line->text.empty());
            readRequest(line->text);
        }
    }
    return 0;
}
