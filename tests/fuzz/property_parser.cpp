// Reads the input as a property file, and compares with a reading of the grammar that goes another way: by
// places in a line, where the library cuts it into pieces.

#include "Expect.h"

#include "zav-util/Properties.h"
#include "zav-util/UtilException.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

using namespace ZAV::Util;

namespace {

/// A file in memory, the same for all runs.
class File {
public:
    File() : descriptor_(memfd_create("properties", 0)) { EXPECT(descriptor_ >= 0); }

    std::string name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

    void write(const std::string& content) const {
        EXPECT(ftruncate(descriptor_, 0) == 0);
        EXPECT(pwrite(descriptor_, content.data(), content.size(), 0) ==
               static_cast<ssize_t>(content.size()));
    }

private:
    int descriptor_;
};

/// The lines of a text, cut in another way than the library does.
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const char c : text) {
        if (c != '\n') {
            lines.back() += c;
            continue;
        }
        if (!lines.back().empty() && lines.back().back() == '\r') {
            lines.back().pop_back();
        }
        lines.emplace_back();
    }
    return lines;
}

/// What lies between two places of a text, without white space around it.
std::string pieceOf(const std::string& text, std::size_t begin, std::size_t end) {
    const std::string whitespace = " \t\f\v\n\r";
    while (begin < end && whitespace.find(text[begin]) != std::string::npos) {
        ++begin;
    }
    while (begin < end && whitespace.find(text[end - 1]) != std::string::npos) {
        --end;
    }
    return text.substr(begin, end - begin);
}

bool holdsOnly(const std::string& text, const std::string& symbols) {
    const std::string allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789" + symbols;
    return !text.empty() && text.find_first_not_of(allowed) == std::string::npos;
}

/// \return false if the line breaks the grammar
bool readLine(const std::string& line, Properties& properties) {
    const std::size_t keyBegin = line.find_first_not_of('=');
    const std::size_t keyEnd = line.find('=', keyBegin);
    const std::size_t valueBegin = line.find_first_not_of('=', keyEnd);
    if (keyBegin == std::string::npos || valueBegin == std::string::npos) {
        return false;
    }
    const std::size_t valueEnd = std::min(line.find('=', valueBegin), line.size());
    const std::string key = pieceOf(line, keyBegin, keyEnd);
    const std::string value = pieceOf(line, valueBegin, valueEnd);
    return line.find_first_not_of('=', valueEnd) == std::string::npos && holdsOnly(key, "-_.") &&
           holdsOnly(value, "-_.:/\\ ") && properties.insert({key, value}).second;
}

/// \return the number of the first line that breaks the grammar, counted from 1; 0 if none does
std::size_t readLines(const std::vector<std::string>& lines, Properties& properties) {
    std::size_t number = 0;
    for (const std::string& line : lines) {
        ++number;
        if (!line.empty() && line.front() != '#' && !readLine(line, properties)) {
            return number;
        }
    }
    return 0;
}

std::size_t lineNumberIn(const std::string& failure) {
    const std::string mark = " on line ";
    const std::string::size_type place = failure.find(mark);
    EXPECT(place != std::string::npos);
    return std::stoul(failure.substr(place + mark.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const File file;
    const std::string text(reinterpret_cast<const char*>(data), size);
    file.write(text);
    Properties expected;
    const std::size_t badLine = readLines(linesOf(text), expected);
    try {
        const Properties properties(file.name());
        EXPECT(badLine == 0);
        EXPECT(properties == expected);
    } catch (const UtilException& exception) {
        EXPECT(lineNumberIn(exception.what()) == badLine);
    }
    return 0;
}
