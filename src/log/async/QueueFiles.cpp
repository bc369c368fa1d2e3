#include "log/async/QueueFiles.h"

#include "log/LogException.h"

#include <algorithm>

namespace ZAV {
namespace Log {

/// The right to a file would be lost if this process opened it once more. One that somebody has removed or
/// replaced is another one by now.
QueueFile* QueueFiles::open(const Util::Properties& properties) {
    settings_.read(properties);
    if (settings_.path.empty()) {
        return nullptr;
    }
    const auto known =
        std::find_if(files_.begin(), files_.end(),
                     [this](const std::unique_ptr<QueueFile>& file) { return file->isAt(settings_.path); });
    if (known != files_.end()) {
        return known->get();
    }
    files_.push_back(std::make_unique<QueueFile>(settings_.path, settings_.size));
    return files_.back().get();
}

/// The key may hold a path from where the process was when it began.
void QueueFiles::refuseChange(const Util::Properties& properties) const {
    const QueueFileSettings settings = settings_.renewedBy(properties);
    const bool isSameFile = settings.name == settings_.name || settings.path == settings_.path;
    const bool isSameSize = settings.name.empty() || settings.size == settings_.size;
    if (!isSameFile || !isSameSize) {
        throw LogException("The queue file cannot be changed by a reload.");
    }
}

void QueueFiles::forgetInChild() noexcept {
    for (std::unique_ptr<QueueFile>& file : files_) {
        file->closeInChild();
        static_cast<void>(file.release()); // its memory is that of blocks
    }
    files_.clear();
}

} // namespace Log
} // namespace ZAV
