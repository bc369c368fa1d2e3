#include "explain/ExplanationForms.h"

#include "terminal/Paint.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

// For the text.

using Row = std::vector<std::string>;

std::vector<Row> tableOf(const Explanation& explanation) {
    Row head{"logger"};
    for (const ExplainedAppender& appender : explanation.appenders()) {
        head.push_back(appender.name());
    }
    std::vector<Row> table{head};
    for (const std::string& logger : explanation.loggers()) {
        Row row{logger};
        for (const Route& route : explanation.routesOf(logger)) {
            row.push_back(route.lowest ? Log::Level::toString(*route.lowest) : "-");
        }
        table.push_back(row);
    }
    return table;
}

std::vector<std::size_t> columnWidths(const std::vector<Row>& table) {
    std::vector<std::size_t> widths(table.front().size());
    for (const Row& row : table) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    return widths;
}

std::string green(const std::string& text, bool withColors) {
    return withColors ? painted(Paint::GREEN, text) : text;
}

// For the graph.

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

std::string tableText(const Explanation& explanation) {
    const std::vector<Row> table = tableOf(explanation);
    const std::vector<std::size_t> widths = columnWidths(table);
    std::string text;
    for (const Row& row : table) {
        for (std::size_t column = 0; column + 1 < row.size(); ++column) {
            text += row[column] + std::string(widths[column] + 2 - row[column].size(), ' ');
        }
        text += row.back() + '\n';
    }
    return text;
}

std::string routesText(const Explanation& explanation, const std::string& logger) {
    std::string text;
    for (const Route& route : explanation.routesOf(logger)) {
        const std::string form = route.layout.empty() ? "" : " as " + route.layout;
        const std::string written = route.lowest ? Log::Level::toString(*route.lowest) +
                                                       " and more severe, written to " + route.place + form
                                                 : "nothing is written";
        text += route.appender + ": " + written + (route.reason.empty() ? "" : ": " + route.reason) + '\n';
    }
    return text;
}

std::string messageText(const Explanation& explanation, const std::string& logger, Log::Level::LogLevel level,
                        bool withColors) {
    const std::string stop = explanation.stopOf(logger, level);
    std::string text = stop.empty() ? "logger: passes\n" : "logger: stops (" + stop + ")\n";
    for (const Delivery& delivery : explanation.deliveriesOf(logger, level)) {
        const bool isWritten = delivery.refusal.empty();
        text += delivery.appender +
                (isWritten ? ": " + green("written", withColors) + " to " + delivery.place
                           : ": not written: " + delivery.refusal) +
                '\n';
    }
    return text;
}

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
