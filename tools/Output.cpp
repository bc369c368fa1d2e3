#include "Output.h"

#include "Failure.h"
#include "OutputClosed.h"
#include "platform/StandardOutput.h"

namespace ZAV {
namespace Tools {

Output::Output() {
    Platform::prepareStandardOutput();
    pending_.reserve(CAPACITY);
}

void Output::write(std::string_view text) {
    if (pending_.size() + text.size() > CAPACITY) {
        flush();
    }
    pending_ += text;
}

void Output::flush() {
    std::string problem;
    const Platform::WriteResult result = Platform::writeStandardOutput(pending_, problem);
    pending_.clear();
    if (result == Platform::WriteResult::NO_READER || result == Platform::WriteResult::STOPPED) {
        throw OutputClosed();
    }
    if (result == Platform::WriteResult::FAILED) {
        throw Failure("cannot write to standard output: " + problem);
    }
}

} // namespace Tools
} // namespace ZAV
