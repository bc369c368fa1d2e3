#pragma once

#include "AcceptanceSupport.h"

#include <cstdlib>

namespace ZAV::TestSupport {

/// Starts programs that log and end, each with a directory of the test's own for its logs.
class EndedProcess : public testing::Test {
protected:
    /// Waits for a program, whose standard error stream becomes a file.
    /// \param arguments to which the directory is added
    /// \return 0 if the program ended with the exit code 0; another number for any other code, or a crash
    int run(const std::string& program, const std::string& arguments) const {
        // Some shells take the quotes off a command that begins with one, so that this one begins otherwise.
        const std::string command = "cd . && " + quoted(program) + " " + arguments + " " +
                                    quoted(directory_.path()) + " 2> " + quoted(directory_ / "errors");
        return std::system(command.c_str());
    }

    std::string errors() const { return readFile(directory_ / "errors"); }

    const TemporaryDirectory directory_;

private:
    static std::string quoted(const std::string& text) { return '"' + text + '"'; }
};

} // namespace ZAV::TestSupport
