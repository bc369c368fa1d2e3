#include "ctl/ControlClient.h"

#include "Outcome.h"

namespace ZAV {
namespace Tools {

namespace {

constexpr std::size_t LARGEST_ANSWER = 16 * 1024 * 1024;

Failure failureAt(const std::string& address, const std::string& reason) {
    return Failure("nobody answers at " + address + ": " + reason);
}

/// Adds the address to a system error.
template <typename Call>
auto at(const std::string& address, Call call) {
    try {
        return call();
    } catch (const std::runtime_error& error) {
        throw failureAt(address, error.what());
    }
}

} // namespace

ControlClient::ControlClient(const std::string& address, std::chrono::seconds limit) try
    : address_(address), connection_(address, limit) {
} catch (const Platform::ForeignServer& error) {
    throw Failure(address + ": " + error.what());
} catch (const std::runtime_error& error) {
    throw failureAt(address, error.what());
}

ControlClient::Answer ControlClient::ask(const std::string& request) {
    const std::string_view refused = "error: ";
    received_.clear(); // the server sends nothing unrequested
    at(address_, [&] { connection_.send(request + "\n"); });
    Answer answer;
    for (std::size_t begin = 0;;) {
        const std::size_t end = received_.find('\n', begin);
        if (end == std::string::npos) {
            receiveMore();
            continue;
        }
        const std::string_view line = std::string_view(received_).substr(begin, end - begin);
        // Only the first line can be a refusal; further ones are the program's, whatever they begin with.
        if (begin == 0 && line.substr(0, refused.size()) == refused) {
            answer.refusal = line.substr(refused.size());
            return answer;
        }
        if (line == "ok") {
            answer.lines = received_.substr(0, begin);
            return answer;
        }
        begin = end + 1;
    }
}

void ControlClient::receiveMore() {
    const std::string bytes = at(address_, [this] { return connection_.receive(); });
    if (bytes.empty()) {
        throw failureAt(address_, "the program has hung up");
    }
    if (bytes.size() > LARGEST_ANSWER - received_.size()) {
        throw Failure(address_ + ": the answer is larger than 16 MiB");
    }
    received_ += bytes;
}

} // namespace Tools
} // namespace ZAV
