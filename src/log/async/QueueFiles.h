#pragma once

#include "log/config/DispatcherSettings.h"
#include "log/queuefile/QueueFile.h"

#include <memory>
#include <vector>

namespace ZAV {
namespace Log {

/// The queue files of this process. Each stays open until the process ends, since the queue may still have
/// messages in it. Not thread-safe.
class QueueFiles {
public:
    /// \return the file that the properties name, opened or created, and never destroyed; null if they name
    ///         none
    /// \throw LogException if it cannot be used
    QueueFile* open(const Util::Properties& properties);

    /// \throw LogException if the properties name another file than those of the last `open`
    void refuseChange(const Util::Properties& properties) const;

    /// In a forked child: gives up the files, which the parent owns.
    void forgetInChild() noexcept;

private:
    std::vector<std::unique_ptr<QueueFile>> files_;
    QueueFileSettings settings_; ///< of the last `open`
};

} // namespace Log
} // namespace ZAV
