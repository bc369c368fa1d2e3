#include "log/async/QueueFiles.h"

#include "log/LogException.h"

#include <algorithm>

namespace ZAV {
namespace Log {

/// Reuses a file that is already open: opening it again would lose this process's lock on it. If the file was
/// removed or replaced meanwhile, the path leads to a different one, which is opened.
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

/// The key may hold a path relative to the working directory at the start, so equal names count as the same
/// file.
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
        static_cast<void>(file.release()); // blocks refer to its memory
    }
    files_.clear();
}

} // namespace Log
} // namespace ZAV
