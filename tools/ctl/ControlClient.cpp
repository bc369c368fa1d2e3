#include "ctl/ControlClient.h"

#include "Failure.h"

namespace ZAV {
namespace Tools {

namespace {

/// Longer than the server gives the silent clients for whom a new one may have to wait.
constexpr std::chrono::milliseconds LIMIT(45000);

Failure failureAt(const std::string& address, const std::string& reason) {
    return Failure("nobody answers at " + address + ": " + reason);
}

/// Has a system's failure name the address.
template <typename Call>
auto at(const std::string& address, Call call) {
    try {
        return call();
    } catch (const std::runtime_error& error) {
        throw failureAt(address, error.what());
    }
}

} // namespace

ControlClient::ControlClient(const std::string& address) try
    : address_(address), connection_(address, LIMIT) {
} catch (const std::runtime_error& error) {
    throw failureAt(address, error.what());
}

ControlClient::Answer ControlClient::ask(const std::string& request) {
    const std::string refused = "error: ";
    at(address_, [&] { connection_.send(request + "\n"); });
    Answer answer;
    for (std::string line = readLine(); line != "ok"; line = readLine()) {
        // A refusal stands alone; further lines are the program's, whatever they begin with.
        if (answer.lines.empty() && line.compare(0, refused.size(), refused) == 0) {
            answer.refusal = line.substr(refused.size());
            return answer;
        }
        answer.lines.push_back(line);
    }
    return answer;
}

std::string ControlClient::readLine() {
    std::string::size_type end = received_.find('\n');
    while (end == std::string::npos) {
        const std::string bytes = at(address_, [this] { return connection_.receive(); });
        if (bytes.empty()) {
            throw failureAt(address_, "the program has hung up");
        }
        end = bytes.find('\n');
        end = end == std::string::npos ? end : received_.size() + end;
        received_ += bytes;
    }
    std::string line = received_.substr(0, end);
    received_.erase(0, end + 1);
    return line;
}

} // namespace Tools
} // namespace ZAV
