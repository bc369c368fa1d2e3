#include "log/layout/UndeliveredMessage.h"

#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "log/text/PackedPairs.h"
#include "zav-util/StandardError.h"

#include <exception>

namespace ZAV {
namespace Log {

std::string shownLine(const char* reason, const MessageFields& message) noexcept {
    try {
        const ReadyText text(message);
        MessageFields shown(message);
        shown.text = text.view();
        std::string pairs;
        appendPairs(pairs, message.values, text.view().empty());
        shown.pairsText = pairs;
        std::string line = reason;
        appendLogLine(line, shown);
        return line;
    } catch (const std::exception&) {
        return std::string();
    }
}

void showLine(const std::string& line, const char* reason) noexcept {
    if (line.empty()) {
        Util::writeErrorLine(reason);
    } else {
        Util::writeErrorLine(line);
    }
}

void showOnStandardError(const char* reason, const MessageFields& message) noexcept {
    showLine(shownLine(reason, message), reason);
}

} // namespace Log
} // namespace ZAV
