#pragma once

#include "explain/Explanation.h"
#include "log/Level.h"

#include <string>

namespace ZAV {
namespace Tools {

// An explanation in two forms: as readable text, in whole lines, and as a graph.

/// \return a table of the loggers against the appenders, with the lowest level that is written
std::string tableText(const Explanation& explanation);

/// \return a line for each appender: what it writes from a logger, and why not more
std::string routesText(const Explanation& explanation, const std::string& logger);

/// \return whether the logger lets a message through, and a line for each appender
/// \param withColors whether the word "written" is coloured
std::string messageText(const Explanation& explanation, const std::string& logger, Log::Level::LogLevel level,
                        bool withColors);

/// An explanation as a graph for Graphviz: loggers on the left, appenders on the right, and an arrow for what
/// is written. A dashed arrow says why something is not.
class DotGraph {
public:
    explicit DotGraph(const Explanation& explanation);

    /// Adds what the table shows.
    void addTable();

    /// Adds what each appender gets from a logger.
    void addRoutes(const std::string& logger);

    /// Adds what each appender does with a message.
    void addMessage(const std::string& logger, Log::Level::LogLevel level);

    /// \return the whole graph, in DOT
    std::string text() const { return text_ + "}\n"; }

private:
    void addAppenders();
    void addLogger(const std::string& logger, const std::string& remark = std::string());
    void addArrow(const std::string& logger, const std::string& appender, const std::string& label,
                  bool isDashed);

    const Explanation& explanation_;
    std::string text_;
};

} // namespace Tools
} // namespace ZAV
