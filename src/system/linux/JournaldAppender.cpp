#include "system/linux/JournaldAppender.h"

#include "log/LogException.h"
#include "system/linux/JournalFields.h"

#include <cerrno>
#include <string>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>
#include <vector>

// The location is the logging call's, not this one.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>

namespace ZAV {
namespace Log {

namespace {

/// The socket that libsystemd sends to; it reports no error if the socket does not exist.
constexpr char JOURNAL[] = "/run/systemd/journal/socket";

} // namespace

void JournaldAppender::doOutput(const LogMessage& message) {
    const std::vector<std::string> fields = journalFieldsOf(message);
    std::vector<iovec> parts;
    parts.reserve(fields.size());
    for (const std::string& field : fields) {
        parts.push_back({const_cast<char*>(field.data()), field.size()}); // only read
    }
    const int error =
        access(JOURNAL, F_OK) != 0 ? errno : -sd_journal_sendv(parts.data(), static_cast<int>(parts.size()));
    if (error > 0) {
        throw LogException("Cannot write to the journal: " + std::system_category().message(error));
    }
}

} // namespace Log
} // namespace ZAV
