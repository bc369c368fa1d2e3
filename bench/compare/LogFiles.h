#pragma once

#include "SampleLine.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

namespace Bench {

/// The expected format of a logger's file.
struct FileFormat {
    std::string pattern = SampleLine::pattern(); ///< a regular expression for the first line
    std::size_t headerLines = 0;                 ///< lines that the logger itself writes first
    std::string end = SampleLine::TEXT;          ///< of every line
    std::size_t lengthRange = 1; ///< by how much other lines' lengths may differ from the first one's
};

/// The lines of calls with values, which differ in length.
inline FileFormat formatWithValues() {
    FileFormat format;
    format.pattern = SampleLine::patternWithValues();
    format.end = SampleLine::VALUES_END;
    format.lengthRange = 16;
    return format;
}

/// The lines of calls with context and values, as JSON.
inline FileFormat formatAsJson() {
    FileFormat format;
    format.pattern = SampleLine::jsonPattern();
    format.end = "}";
    return format;
}

/// Reads a written file and fails if it is not what the calls should have produced.
class FileCheck {
public:
    FileCheck(const std::string& path, const FileFormat& format) : path_(path), format_(format) {}

    /// \return the number of messages in the file
    std::size_t countMessages() {
        std::ifstream stream(path_, std::ios::binary);
        if (!stream) {
            fail("cannot be read");
        }
        std::string line;
        skipHeader(stream, line);
        std::size_t messages = 0;
        for (; std::getline(stream, line); ++messages) {
            if (stream.eof()) {
                fail("ends in the middle of a line: " + line);
            }
            checkLine(line, messages == 0);
        }
        return messages;
    }

    void expectMessages(std::size_t expected) {
        const std::size_t messages = countMessages();
        if (messages != expected) {
            fail("has " + std::to_string(messages) + " lines instead of " + std::to_string(expected));
        }
    }

private:
    void skipHeader(std::ifstream& stream, std::string& line) {
        for (std::size_t i = 0; i < format_.headerLines; ++i) {
            std::getline(stream, line);
        }
    }

    void checkLine(const std::string& line, bool isFirst) {
        if (isFirst) {
            if (!std::regex_match(line, std::regex(format_.pattern))) {
                fail("starts with a line of a wrong layout: " + line);
            }
            length_ = line.size();
        }
        // A line into which several threads have written is longer or shorter, or ends differently. Only a
        // thread id may be a digit longer than another one.
        const std::size_t range = format_.lengthRange;
        const bool complete = line.size() + range >= length_ && line.size() <= length_ + range;
        if (!complete ||
            line.compare(line.size() - format_.end.size(), format_.end.size(), format_.end) != 0) {
            fail("has a damaged line: " + line);
        }
    }

    [[noreturn]] void fail(const std::string& reason) const {
        throw std::runtime_error(path_ + " " + reason);
    }

    std::string path_;
    FileFormat format_;
    std::size_t length_ = 0;
};

inline std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file() && !entry.is_symlink()) {
            paths.push_back(entry.path().string());
        }
    }
    return paths;
}

/// \return the only file in a folder, for loggers that choose the name themselves
inline std::string onlyFileIn(const std::string& folder) {
    const std::vector<std::string> paths = filesIn(folder);
    if (paths.size() != 1) {
        throw std::runtime_error(std::to_string(paths.size()) + " files in " + folder + " instead of one");
    }
    return paths.front();
}

inline std::size_t fileSize(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<std::size_t>(size);
}

} // namespace Bench
