#include "follow/FollowedInput.h"

#include "follow/Tail.h"
#include "inputs/LogFiles.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

/// Opens the rolled files one after another, the newest first.
std::vector<LogFile>::iterator findRolledPlace(std::vector<LogFile>& files, const FilePlace& place) {
    std::string ignored;
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
        const bool holds = !file->rolledPath.empty() && place.offset() > 0 && openRolled(*file, ignored) &&
                           place.isIn(file->file);
        if (holds) {
            return std::prev(file.base());
        }
        closeRolled(*file);
    }
    return files.end();
}

/// \return the file of a place, found by its identity and content or else by its content alone; the end if it is not
///         there
std::vector<LogFile>::iterator findPlace(std::vector<LogFile>& files, const FilePlace& place) {
    const auto isSame = [&place](const LogFile& file) { return file.file.identity() == place.identity(); };
    const auto holds = [&place](const LogFile& file) { return place.offset() > 0 && place.isIn(file.file); };
    const auto same = std::find_if(files.begin(), files.end(), isSame);
    if (same != files.end() && place.isIn(same->file)) {
        return same;
    }
    const auto other = std::find_if(files.begin(), files.end(), [&holds](const LogFile& file) {
        return file.file.isOpen() && holds(file);
    });
    return other != files.end() ? other : findRolledPlace(files, place);
}

std::vector<FilePlace> endsOf(const std::vector<LogFile>& files) {
    std::vector<FilePlace> ends;
    for (const LogFile& file : files) {
        if (file.rolledPath.empty()) {
            ends.push_back(FilePlace::in(file.file, file.file.size()));
        }
    }
    return ends;
}

} // namespace

void FollowedInput::poll(std::vector<std::string>& notices) {
    const std::string problem = stream_.takeProblem();
    if (!problem.empty() && problem != readProblem_) {
        notices.push_back(problem);
        readProblem_ = problem;
    }
    if (stream_.hasMoreFiles() || hasEnded()) {
        return;
    }
    if (stream_.file() == nullptr) {
        openFirst(notices);
        tailFilter_ = nullptr; // what appears later is read from its start
    } else if (isStandardInput()) {
        return; // which cannot be opened again by a name
    } else if (isCurrentLive()) {
        reopenIfCut(notices);
    } else {
        appendNewerFiles(notices);
    }
}

void FollowedInput::openFirst(std::vector<std::string>& notices) {
    kind_ = resolve(spec_);
    std::vector<std::string> problems;
    std::vector<LogFile> files = openAll(spec_, problems);
    for (std::string& problem : problems) {
        problem += files.empty() && !isStandardInput() ? "; waiting for it" : "";
    }
    noticeNew(notices, std::move(problems));
    if (files.empty()) {
        return;
    }
    if (!isStandardInput()) {
        done_ = endsOf(files);
        leaveOutKnown(files); // none is known yet
    }
    if (resumedPlace_) {
        skipToResumedPlace(files, notices);
    } else if (tailFilter_ != nullptr && !isStandardInput()) {
        cutToTail(files, *tailFilter_, tailLength_);
    }
    append(std::move(files));
}

void FollowedInput::skipToResumedPlace(std::vector<LogFile>& files, std::vector<std::string>& notices) {
    const auto found = findPlace(files, *resumedPlace_);
    if (found == files.end()) {
        warnOfLoss(notices, "the file that was read last is gone");
        return;
    }
    found->offset = resumedPlace_->offset();
    files.erase(files.begin(), found);
}

/// A file that was truncated and has since grown to its old size or beyond has other bytes before the place.
void FollowedInput::reopenIfCut(std::vector<std::string>& notices) {
    const LogFile& current = *stream_.file();
    if (current.file.isPacked()) {
        return; // it is complete, and its size is not that of its content
    }
    const bool isCut = current.file.size() < stream_.bytesSeen() || (seen_ && !seen_->isIn(current.file));
    if (!isCut) {
        return;
    }
    LogFile again;
    again.path = current.path;
    again.layout = spec_.layout;
    std::string problem;
    if (again.file.open(livePath(), problem) && again.file.identity() == current.file.identity()) {
        warnOfLoss(notices, "the file was cut");
        stream_.leaveFile();
        stream_.append(std::move(again));
        seen_.reset();
    }
}

void FollowedInput::settle() {
    stream_.settle();
    noteLeft();
    const bool hasRead = !seen_ || seen_->offset() != stream_.bytesSeen();
    if (stream_.file() != nullptr && hasRead && !isStandardInput()) {
        seen_ = FilePlace::in(stream_.file()->file, stream_.bytesSeen());
    }
}

bool FollowedInput::isCurrentLive() const {
    Platform::FileIdentity live;
    const bool isThere = Platform::identifyFile(livePath(), live);
    return isThere && live == stream_.file()->file.identity();
}

/// Appends the files that are newer than the current one. That is complete now, and the stream reads it to
/// its end first.
void FollowedInput::appendNewerFiles(std::vector<std::string>& notices) {
    InputSpec spec = spec_;
    spec.kind = kind_;
    spec.mayBeMissing = true; // between two steps of a rotation
    std::vector<std::string> problems;
    std::vector<LogFile> files = openAll(spec, problems);
    noticeNew(notices, std::move(problems));
    std::vector<FilePlace> ends = endsOf(files);
    leaveOutKnown(files);
    const auto current = findCurrent(files);
    const bool isFound = current != files.end() || !stream_.file()->rolledPath.empty();
    if (current != files.end()) {
        files.erase(files.begin(), std::next(current));
    } else if (kind_ == InputSpec::SERIES) {
        leaveOutDone(files);
    }
    const bool hasMembers =
        kind_ == InputSpec::SERIES || (!files.empty() && !files.front().rolledPath.empty());
    if (!isFound && hasMembers && !files.empty()) {
        warnOfLoss(notices, "files came and went unseen");
    }
    done_ = std::move(ends);
    append(std::move(files));
}

/// The current file may have been rolled since the last poll, and be packed by now.
std::vector<LogFile>::iterator FollowedInput::findCurrent(std::vector<LogFile>& files) const {
    const LogContent& current = stream_.file()->file;
    const auto found = std::find_if(files.begin(), files.end(), [&current](const LogFile& file) {
        Platform::FileIdentity identity;
        const bool isThere = file.file.isOpen() || Platform::identifyFile(file.rolledPath, identity);
        return isThere && current.identity() == (file.file.isOpen() ? file.file.identity() : identity);
    });
    return found != files.end() ? found : findRolledPlace(files, FilePlace::in(current, current.size()));
}

/// A rolled file is never renamed, so its name identifies it.
void FollowedInput::leaveOutKnown(std::vector<LogFile>& files) {
    const auto isKnown = [this](const LogFile& file) {
        return !file.rolledPath.empty() && !knownRolled_.insert(file.rolledPath).second;
    };
    files.erase(std::remove_if(files.begin(), files.end(), isKnown), files.end());
}

void FollowedInput::leaveOutDone(std::vector<LogFile>& files) const {
    const auto isDone = [this](const LogFile& file) {
        return std::any_of(done_.begin(), done_.end(), [&file](const FilePlace& end) {
            return end.identity() == file.file.identity() && end.offset() == file.file.size() &&
                   end.isIn(file.file);
        });
    };
    files.erase(std::remove_if(files.begin(), files.end(), isDone), files.end());
}

void FollowedInput::append(std::vector<LogFile> files) {
    if (!files.empty()) {
        seen_.reset();
    }
    for (LogFile& file : files) {
        stream_.append(std::move(file));
    }
}

/// A record is complete when all of its parts are.
void FollowedInput::commit() {
    if (stream_.record().isPart) {
        return;
    }
    committedFile_ = stream_.fileCount();
    committedEnd_ = stream_.record().end;
}

/// Before offset 0 nothing identifies a file once it is packed and has another identity, so the end of the
/// file before it is given instead.
std::optional<FilePlace> FollowedInput::place() {
    const LogFile* file = stream_.file();
    if (file == nullptr) {
        return resumedPlace_;
    }
    noteLeft();
    const bool hasCommitted = committedFile_ == stream_.fileCount();
    const std::uint64_t offset = hasCommitted ? committedEnd_ : file->offset;
    return offset == 0 && before_ ? before_ : FilePlace::in(file->file, offset);
}

/// A truncated file that is read anew has no file before it.
void FollowedInput::noteLeft() {
    const std::optional<RecordStream::Left> left = stream_.takeLeft();
    if (!left || isStandardInput()) {
        return;
    }
    const LogContent& file = left->log.file;
    before_ = file.identity() == stream_.file()->file.identity()
                  ? std::nullopt
                  : std::optional(FilePlace::in(file, committedFile_ == left->number ? committedEnd_
                                                                                     : left->log.offset));
}

/// Reports the problems that the last poll did not find.
void FollowedInput::noticeNew(std::vector<std::string>& notices, std::vector<std::string> problems) {
    for (const std::string& problem : problems) {
        if (std::find(problems_.begin(), problems_.end(), problem) == problems_.end()) {
            notices.push_back(problem);
        }
    }
    problems_ = std::move(problems);
}

std::string FollowedInput::livePath() const {
    return kind_ == InputSpec::SERIES ? spec_.path + '0' : spec_.path;
}

void FollowedInput::warnOfLoss(std::vector<std::string>& notices, const std::string& reason) const {
    notices.push_back(spec_.path + ": " + reason + "; records may have been lost");
}

} // namespace Tools
} // namespace ZAV
