#include "log/layout/LineLayout.h"

#include "log/LogLine.h"
#include "log/message/MessageFields.h"
#include "platform/Process.h"
#include "zav-util/SystemInformation.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace ZAV {
namespace Log {

namespace {

std::shared_ptr<const LineLayout> makeUnescaped(LayoutName name, const std::vector<Column>& columns) {
    switch (name) {
    case LayoutName::PROCESS:
        return std::make_shared<ProcessLayout>();
    case LayoutName::JSON:
        return std::make_shared<JsonLayout>();
    case LayoutName::FIELDS:
        return std::make_shared<FieldsLayout>(columns);
    case LayoutName::PLAIN:
        break;
    }
    return std::make_shared<PlainLayout>();
}

} // namespace

std::shared_ptr<const LineLayout> makeLayout(LayoutName name, const std::vector<Column>& columns,
                                             bool isEscaped) {
    std::shared_ptr<const LineLayout> layout = makeUnescaped(name, columns);
    if (isEscaped && name != LayoutName::JSON) {
        return std::make_shared<EscapedLayout>(std::move(layout));
    }
    return layout;
}

std::string formatLogLine(const LogMessage& message) {
    std::string line;
    appendLogLine(line, message);
    return line;
}

std::string formatLogLineWithProcess(const LogMessage& message) {
    std::string line;
    appendLogLineWithProcess(line, message);
    return line;
}

// The process that lines show

namespace {

/// Read once, since the name cannot change and reading it costs as much as opening a file.
struct ProgramName : Platform::NeverDestroyed<ProgramName> {
    const std::string text = Util::getProgramName();
};

/// Initialised at load, so that no thread does it while another one forks.
const ProgramName& madeAtLoad = ProgramName::instance();

/// The host's name, as a thread last read it.
struct KnownHost {
    std::uint64_t second; ///< of the message it was read for, since 1970; 0 if it was never read
    std::size_t length;
    char name[256];
};

thread_local KnownHost knownHost{};

thread_local const ProcessDescription* shownProcess = nullptr;

/// The host may be renamed while the program runs, but reading its name costs a good part of what rendering a
/// line does, so it is read once a second.
std::string_view hostName(Util::TimeUtils::Time time) {
    KnownHost& host = knownHost;
    const std::uint64_t second = time.microseconds() / 1000000;
    if (host.second != second || second == 0) {
        const std::string name = Util::getHostName();
        host.length = name.copy(host.name, sizeof host.name);
        host.second = second;
    }
    return std::string_view(host.name, host.length);
}

} // namespace

ProcessOverride::ProcessOverride(const ProcessDescription& process) noexcept : process_(process) {
    shownProcess = &process_;
}

ProcessOverride::~ProcessOverride() {
    shownProcess = nullptr;
}

ProcessDescription describeProcess(Util::TimeUtils::Time time) {
    if (shownProcess != nullptr) {
        return *shownProcess;
    }
    return {ProgramName::instance().text, Platform::rememberedProcessId(), hostName(time)};
}

} // namespace Log
} // namespace ZAV
