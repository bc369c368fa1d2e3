// Reads the input as a property file. What is accepted must keep to the grammar and read the same when it is
// written out and read again; what is rejected must be so at the line that the text names, whatever follows
// it.

#include "Expect.h"

#include "zav-util/Properties.h"
#include "zav-util/PropertyParser.h"
#include "zav-util/UtilException.h"

#include <algorithm>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

using namespace ZAV::Util;

namespace {

struct Outcome {
    Properties properties;
    std::string failure;
};

bool operator==(const Outcome& a, const Outcome& b) {
    return a.failure == b.failure && (!a.failure.empty() || a.properties == b.properties);
}

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

Outcome read(const std::string& fileName) {
    try {
        return {Properties(fileName), ""};
    } catch (const UtilException& exception) {
        return {Properties(), exception.what()};
    }
}

Outcome parse(const std::string& fileName, const std::vector<std::string>& lines) {
    Outcome outcome;
    try {
        PropertyParser(fileName).parse(lines, outcome.properties);
    } catch (const UtilException& exception) {
        outcome.failure = exception.what();
    }
    return outcome;
}

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

bool holdsOnly(const std::string& text, const std::string& symbols) {
    const std::string allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789" + symbols;
    return text.find_first_not_of(allowed) == std::string::npos;
}

void expectGrammar(const Properties& properties) {
    for (const auto& [key, value] : properties) {
        EXPECT(!key.empty() && holdsOnly(key, "-_."));
        EXPECT(!value.empty() && holdsOnly(value, "-_.:/\\ "));
        EXPECT(value.front() != ' ' && value.back() != ' ');
    }
}

void expectOnePropertyALine(const Properties& properties, const std::vector<std::string>& lines) {
    const auto isSkipped = [](const std::string& line) { return line.empty() || line.front() == '#'; };
    const auto skipped = std::count_if(lines.begin(), lines.end(), isSkipped);
    EXPECT(properties.size() + static_cast<std::size_t>(skipped) == lines.size());
}

std::string toText(const Properties& properties) {
    std::string text;
    for (const auto& [key, value] : properties) {
        text += key + " = " + value + "\r\n";
    }
    return text;
}

std::size_t lineNumberIn(const std::string& failure) {
    const std::string mark = " on line ";
    const std::string::size_type place = failure.find(mark);
    EXPECT(place != std::string::npos);
    return std::stoul(failure.substr(place + mark.size()));
}

void expectFirstBadLine(const Outcome& outcome, const std::string& fileName, std::vector<std::string> lines) {
    const std::size_t bad = lineNumberIn(outcome.failure);
    EXPECT(bad >= 1 && bad <= lines.size());
    lines.resize(bad);
    EXPECT(parse(fileName, lines) == outcome);
    lines.pop_back();
    EXPECT(parse(fileName, lines).failure.empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const File file;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> lines = linesOf(text);
    file.write(text);
    const Outcome outcome = read(file.name());
    EXPECT(parse(file.name(), lines) == outcome);
    if (outcome.failure.empty()) {
        expectGrammar(outcome.properties);
        expectOnePropertyALine(outcome.properties, lines);
        file.write(toText(outcome.properties));
        EXPECT(read(file.name()) == outcome);
    } else {
        expectFirstBadLine(outcome, file.name(), lines);
    }
    return 0;
}
