#include "log/appenders/FileAppender.h"

#include "log/LogException.h"
#include "platform/Files.h"
#include "zav-util/Conversions.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

namespace {

constexpr char LIVE_INDEX = '0';

/// \return a number above every index if the name does not end in a digit
std::uint64_t indexOf(const std::string& fileName) {
    return static_cast<std::uint64_t>(fileName.back() - '0');
}

} // namespace

FileAppender::FileAppender(const AppenderValues& values, const Filters& filters)
    : LiveFileAppender(values, filters, values.file + LIVE_INDEX),
      fileNumber_(std::min(values.fileNumber, HIGHEST_FILE_NUMBER)) {}

/// If memory runs out here, the next message resumes where this one stopped.
void FileAppender::prepareFile(const LogMessage&) {
    if (outputFileStream_.isOpen() && hasRoom() && !owner_.isBehind()) {
        return;
    }
    if (!owner_.mayRotate()) {
        followFile();
        return;
    }
    if (!outputFileStream_.isOpen() && !hasRotated_ && owner_.isShared()) {
        continueFile();
        if (hasRoom()) {
            return;
        }
    }
    writeKept();
    checkFile();
    outputFileStream_.close();
    if (!hasRotated_) {
        if (mustBrowse_) {
            browseFiles();
        }
        rotateFiles();
        hasRotated_ = true;
    }
    openFile();
}

bool FileAppender::hasRoom() const {
    return currentSize_ + line().size() <= values_.fileMaxSize && !isTooOld();
}

bool FileAppender::isTooOld() const {
    return values_.fileMaxLifetime != Time() && Time::now() > openTime_ + values_.fileMaxLifetime;
}

/// Finds the files left by an earlier run or another process.
void FileAppender::browseFiles() {
    std::vector<std::string> entries;
    if (!Platform::listFiles(folder_, entries)) {
        const std::string pattern = values_.dir + "/*";
        const int invalidHandle = -1;
        throw LogException(
            Util::format("FindFirstFile returned %d while trying to browse files by pattern %s",
                         invalidHandle, pattern.c_str()));
    }
    std::deque<std::string> found;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(found),
                 [this](const std::string& entry) { return isInSeries(entry); });
    std::sort(found.begin(), found.end());
    fileNames_.swap(found);
    mustBrowse_ = false;
}

bool FileAppender::isInSeries(const std::string& fileName) const {
    return fileName.size() == values_.file.size() + 1 &&
           fileName.compare(0, values_.file.size(), values_.file) == 0 && indexOf(fileName) <= fileNumber_;
}

/// Makes room for a new live file. Works from the highest index down, so that no file is renamed onto another
/// of the series; a file that cannot be deleted or renamed stays. All memory is allocated before the first
/// file is touched, so that the series moves as a whole or not at all.
void FileAppender::rotateFiles() {
    struct Renaming {
        std::string* name;
        std::string from;
        std::string to;
    };
    std::vector<Renaming> renamings;
    for (auto name = fileNames_.rbegin(); name != fileNames_.rend(); ++name) {
        std::string next = *name;
        ++next.back();
        renamings.push_back({&*name, pathOf(*name), pathOf(next)});
    }
    const bool isFull = !fileNames_.empty() && indexOf(fileNames_.back()) >= fileNumber_;
    bool isGone = true; // whether the file with the lowest index, processed last, has been moved
    if (isFull) {
        isGone = Platform::removeFile(renamings.front().from);
        fileNames_.pop_back();
    }
    for (auto renaming = renamings.begin() + (isFull ? 1 : 0); renaming != renamings.end(); ++renaming) {
        ++renaming->name->back();
        isGone = Platform::renameFile(renaming->from, renaming->to);
    }
    liveFileStays_ = !isGone && renamings.back().from == livePath_;
}

void FileAppender::openFile() {
    fileNames_.push_front(values_.file + LIVE_INDEX);
    hasRotated_ = false; // from here on the live file is open, or has failed
    openLiveFile(liveFileStays_ ? Platform::OutputFile::TRUNCATE : Platform::OutputFile::CREATE);
    currentSize_ = outputFileStream_.size();
    owner_.noteRotation();
}

/// The older files are not renamed.
void FileAppender::continueFile() {
    mustBrowse_ = true;
    hasRotated_ = false;
    LiveFileAppender::continueFile();
}

} // namespace Log
} // namespace ZAV
