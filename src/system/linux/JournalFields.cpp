#include "system/linux/JournalFields.h"

#include "log/LogMessage.h"
#include "system/linux/Severity.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string_view>

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

} // namespace Log
} // namespace ZAV
