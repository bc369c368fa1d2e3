#include "explain/DotGraph.h"

namespace ZAV {
namespace Tools {

namespace {

/// \return the text as a quoted DOT string, in which only line feeds keep a special meaning
std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
        }
        result += c == '\n' ? "\\n" : std::string(1, c);
    }
    return result + '"';
}

std::string loggerNode(const std::string& logger) {
    return quoted("logger " + logger);
}

std::string appenderNode(const std::string& appender) {
    return quoted("appender " + appender);
}

std::string join(const std::string& first, const std::string& second) {
    return second.empty() ? first : first + '\n' + second;
}

} // namespace

DotGraph::DotGraph(const Explanation& explanation)
    : explanation_(explanation), text_("digraph explanation {\n    rankdir=LR;\n") {
    addAppenders();
}

void DotGraph::addAppenders() {
    for (const ExplainedAppender& appender : explanation_.appenders()) {
        text_ += "    " + appenderNode(appender.name()) +
                 " [shape=note, label=" + quoted(join(appender.name(), appender.place())) + "];\n";
    }
}

void DotGraph::addTable() {
    for (const std::string& logger : explanation_.loggers()) {
        addLogger(logger);
        for (const Route& route : explanation_.routesOf(logger)) {
            if (route.lowest) {
                addArrow(logger, route.appender, Log::Level::toString(*route.lowest), false);
            }
        }
    }
}

void DotGraph::addRoutes(const std::string& logger) {
    addLogger(logger);
    for (const Route& route : explanation_.routesOf(logger)) {
        const std::string lowest = route.lowest ? Log::Level::toString(*route.lowest) : "nothing";
        addArrow(logger, route.appender, join(lowest, route.reason), !route.lowest);
    }
}

void DotGraph::addMessage(const std::string& logger, Log::Level::LogLevel level) {
    const std::string stop = explanation_.stopOf(logger, level);
    addLogger(logger, stop.empty() ? "passes" : "stops (" + stop + ")");
    for (const Delivery& delivery : explanation_.deliveriesOf(logger, level)) {
        const bool isWritten = delivery.refusal.empty();
        addArrow(logger, delivery.appender, isWritten ? "written" : join("not written", delivery.refusal),
                 !isWritten);
    }
}

void DotGraph::addLogger(const std::string& logger, const std::string& remark) {
    text_ += "    " + loggerNode(logger) + " [shape=box, label=" + quoted(join(logger, remark)) + "];\n";
}

void DotGraph::addArrow(const std::string& logger, const std::string& appender, const std::string& label,
                        bool isDashed) {
    text_ += "    " + loggerNode(logger) + " -> " + appenderNode(appender) + " [" +
             (isDashed ? "style=dashed, " : "") + "label=" + quoted(label) + "];\n";
}

} // namespace Tools
} // namespace ZAV
