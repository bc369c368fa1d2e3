#include "explain/ExplanationText.h"

#include "terminal/Paint.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace ZAV {
namespace Tools {

namespace {

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

} // namespace Tools
} // namespace ZAV
