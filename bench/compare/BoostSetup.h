#pragma once

#include "Workload.h"

#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/log/attributes/clock.hpp>
#include <boost/log/attributes/current_process_id.hpp>
#include <boost/log/attributes/current_process_name.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks/sync_frontend.hpp>
#include <boost/log/sinks/text_ostream_backend.hpp>
#include <boost/log/sources/severity_channel_logger.hpp>
#include <boost/log/support/date_time.hpp>
#include <boost/make_shared.hpp>

#include <unistd.h>

#include <fstream>
#include <ostream>
#include <string>

namespace Bench {

namespace expressions = boost::log::expressions;
namespace keywords = boost::log::keywords;
namespace sinks = boost::log::sinks;

enum Severity { INFO, WARNING };

inline std::ostream& operator<<(std::ostream& stream, Severity severity) {
    return stream << (severity == INFO ? "INFO" : "WARNING");
}

using OwnLogger = boost::log::sources::severity_channel_logger<Severity, std::string>;
using SharedLogger = boost::log::sources::severity_channel_logger_mt<Severity, std::string>;
using Backend = sinks::text_ostream_backend;

inline auto timeFormatter() {
    return expressions::format_date_time<boost::posix_time::ptime>("TimeStamp", "%Y.%m.%d %H:%M:%S:%f");
}

template <typename Start>
auto appendMessage(const Start& start) {
    return start << ' ' << expressions::attr<std::string>("Channel") << ' '
                 << expressions::attr<std::string>("File") << ':' << expressions::attr<int>("Line") << ' '
                 << expressions::attr<Severity>("Severity") << ' ' << expressions::smessage;
}

inline boost::log::formatter makeFormatter() {
    return appendMessage(expressions::stream << timeFormatter());
}

inline boost::log::formatter makeFormatterWithProcess() {
    char host[256] = {};
    ::gethostname(host, sizeof host - 1);
    using boost::log::attributes::current_process_id;
    return appendMessage(expressions::stream
                         << timeFormatter() << ' ' << expressions::attr<std::string>("ProcessName") << ' '
                         << expressions::attr<current_process_id::value_type>("ProcessId") << ' '
                         << std::string(host));
}

/// Process ids are hexadecimal, so the line needs another pattern.
inline std::string patternWithHexadecimalProcessId() {
    return std::string(SampleLine::TIME_PATTERN) + R"( [\w.-]+ 0x[0-9a-f]+ [\w.-]+)" +
           SampleLine::MESSAGE_PATTERN;
}

inline void addAttributes() {
    const auto core = boost::log::core::get();
    core->add_global_attribute("TimeStamp", boost::log::attributes::local_clock());
    core->add_global_attribute("ProcessId", boost::log::attributes::current_process_id());
    core->add_global_attribute("ProcessName", boost::log::attributes::current_process_name());
}

inline boost::shared_ptr<Backend> makeFileBackend(const Task& task) {
    const auto backend = boost::make_shared<Backend>();
    backend->add_stream(boost::make_shared<std::ofstream>(task.file()));
    backend->auto_flush(true);
    return backend;
}

template <typename Sink>
boost::shared_ptr<Sink> attach(const boost::shared_ptr<Sink>& sink) {
    addAttributes();
    sink->set_formatter(makeFormatter());
    boost::log::core::get()->add_sink(sink);
    return sink;
}

inline void attachFile(const Task& task) {
    attach(boost::make_shared<sinks::synchronous_sink<Backend>>(makeFileBackend(task)));
}

} // namespace Bench
