#include "system/linux/LinuxAppenders.h"

#include "log/LogException.h"
#include "log/LogMessage.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>
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

// The journal drops a field with a longer name, and an entry with more fields than 1024.
constexpr std::size_t LONGEST_NAME = 64;
constexpr std::size_t MAX_FIELDS = 1000;

char upperOrUnderscore(char character) {
    if (character >= 'a' && character <= 'z') {
        return static_cast<char>(character - 'a' + 'A');
    }
    const bool fits = (character >= 'A' && character <= 'Z') || (character >= '0' && character <= '9');
    return fits ? character : '_';
}

/// The journal rejects names that begin with a digit, and reserves those that begin with "_".
std::string nameOf(const std::string& key) {
    std::string name = key;
    std::transform(name.begin(), name.end(), name.begin(), upperOrUnderscore);
    if (name.empty() || name.front() < 'A' || name.front() > 'Z') {
        name.insert(0, "PAIR_");
    }
    return name;
}

/// The fields of one entry, in the order in which they are added.
class Fields {
public:
    void add(std::string_view name, std::string_view value) {
        std::string& field = all.emplace_back();
        field.reserve(name.size() + 1 + value.size());
        field.append(name).append(1, '=').append(value);
    }

    void addPairs(const LogMessage::Pairs& pairs) {
        for (const auto& [key, value] : pairs) {
            if (all.size() == MAX_FIELDS) {
                return;
            }
            const std::string name = freeName(nameOf(key));
            add(name, value);
            names_.insert(name);
        }
    }

    std::vector<std::string> all;

private:
    /// \return the name, with as many "_" appended as it takes to be unique. If no more fit, a field gets two values,
    ///         both of which the journal keeps.
    std::string freeName(const std::string& name) const {
        std::string free = name.substr(0, LONGEST_NAME);
        for (std::size_t added = 1; added < LONGEST_NAME && names_.count(free) > 0; ++added) {
            free = name.substr(0, LONGEST_NAME - added).append(added, '_');
        }
        return free;
    }

    /// Names in use. Includes the library's own even if the message lacks them, so that a pair always gets
    /// the same name.
    std::set<std::string> names_{"MESSAGE", "PRIORITY", "LOGGER", "CODE_FILE", "CODE_LINE", "TID"};
};

/// The socket that libsystemd sends to; it reports no error if the socket does not exist.
constexpr char JOURNAL[] = "/run/systemd/journal/socket";

} // namespace

std::vector<std::string> journalFieldsOf(const LogMessage& message) {
    Fields fields;
    fields.add("MESSAGE", message.getMessage());
    fields.add("PRIORITY", std::to_string(severityOf(message.getLevel())));
    fields.add("LOGGER", message.getLoggerName());
    if (!message.getFile().empty()) {
        fields.add("CODE_FILE", message.getFile());
    }
    if (message.getLine() > 0) {
        fields.add("CODE_LINE", std::to_string(message.getLine()));
    }
    if (message.getThread() != 0) {
        fields.add("TID", std::to_string(message.getThread()));
    }
    fields.addPairs(message.getValues());
    fields.addPairs(message.getContext());
    return fields.all;
}

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
