#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace ZAV {
namespace Log {

/// Cuts the bytes of one client into lines. It never keeps more than one line that is too long and what was
/// added last.
class LineBuffer {
public:
    /// The longest line, without its end.
    static constexpr std::size_t MAX_LENGTH = 4096;

    struct Line {
        std::string text; ///< without the LF or CR LF
        bool isTooLong;   ///< the text is dropped then; told as soon as the limit is passed
    };

    void append(const std::string& bytes);

    /// \return the next line, if it is there
    std::optional<Line> next();

private:
    std::optional<Line> nextEnded(std::size_t end);

    std::string bytes_;
    bool isSkipping_ = false; ///< the rest of a line that is too long, up to its end
};

} // namespace Log
} // namespace ZAV
