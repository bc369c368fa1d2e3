#pragma once

#include "AcceptanceSupport.h"

#include <cstdlib>

namespace ZAV::TestSupport {

/// Starts programs that log and end; their log directory is private to the test.
class EndedProcess : public testing::Test {
protected:
    /// Runs a program to its end, with standard error redirected to a file.
    /// \param arguments to which the directory is appended
    /// \return 0 if the program ended with the exit code 0; another number for any other code, or a crash
    int run(const std::string& program, const std::string& arguments) const {
        // Some shells remove the quotes from a command that begins with one, so this one begins differently.
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
