#pragma once

#include "LogFiles.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Bench {

/// The files left by a rotation. The oldest lines were deleted with their files, but since all lines are
/// equally long, every full file had the same number of them: the rest can be calculated.
class RotatedFiles {
public:
    RotatedFiles(const std::string& folder, const FileFormat& format) {
        for (const std::string& path : filesIn(folder)) {
            messages_.push_back(FileCheck(path, format).countMessages());
        }
        std::sort(messages_.begin(), messages_.end(), std::greater<>());
    }

    /// \param written the number of all messages, including those of the deleted files
    /// \param maxFiles how many files the logger may keep
    void expect(std::size_t written, std::size_t maxFiles) const {
        expectThat(messages_.size() == maxFiles, "a wrong number of files is left");
        const std::size_t inFullFile = messages_.front();
        const bool othersAreFull =
            std::all_of(messages_.begin(), messages_.end() - 1,
                        [inFullFile](std::size_t messages) { return messages == inFullFile; });
        expectThat(othersAreFull, "full files differ in their number of lines");
        std::size_t kept = 0;
        for (const std::size_t messages : messages_) {
            kept += messages;
        }
        expectThat(written >= kept + inFullFile, "no full file was deleted");
        expectThat((written - kept) % inFullFile == 0, "lines are missing");
    }

private:
    static void expectThat(bool condition, const char* failure) {
        if (!condition) {
            throw std::runtime_error(std::string("rotation: ") + failure);
        }
    }

    std::vector<std::size_t> messages_; ///< of each file, the highest first
};

} // namespace Bench
