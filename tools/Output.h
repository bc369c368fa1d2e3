#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZAV {
namespace Tools {

/// Standard output, collected into large writes. What its user must see at once needs a `flush`; so does the
/// end.
class Output {
public:
    Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// \throw OutputClosed if nobody reads any more; Failure if the system does not take the text
    void write(std::string_view text);

    /// \copydoc write
    void flush();

private:
    static constexpr std::size_t CAPACITY = 64 * 1024;

    std::string pending_;
};

} // namespace Tools
} // namespace ZAV
