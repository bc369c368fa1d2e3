#include "log/appenders/FileAppender.h"

#include "log/LogException.h"
#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "platform/Files.h"
#include "zav-util/Conversions.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

// The live file

LiveFileAppender::LiveFileAppender(const AppenderValues& values, const Filters& filters,
                                   const std::string& liveName)
    : BatchAppender(values.name, !values.asynchronous, filters, values.writesBatches), values_(values),
      layout_(values.layoutOr(LayoutName::PLAIN)), folder_(Platform::absolutePath(values.dir)),
      livePath_(pathOf(liveName)), owner_(livePath_), openTime_(Time::now()), liveName_(liveName),
      lastLook_(openTime_) {}

/// An appender removed during a round may still have unwritten lines.
LiveFileAppender::~LiveFileAppender() {
    endRound();
}

void LiveFileAppender::outputLine(const LogMessage& message) {
    recover();
    checkFile();
    appendWholeLine(beginLine(), message, *layout_);
    prepareFile(message);
    currentSize_ += line().size();
    if (keepsLines()) {
        keepLine();
        return;
    }
    write(line());
    checkFile();
}

/// Reopens a file that has failed, or whose path no longer names it. A failure here supersedes an older one.
void LiveFileAppender::recover() {
    if (values_.recovery == Time() || !isTimeToLook()) {
        return;
    }
    lastLook_ = Time::now();
    const bool isGone = outputFileStream_.isOpen() && !outputFileStream_.isAt(livePath_);
    if (isGone) {
        writeKept();
        checkFile();
    }
    if (outputFileStream_.hasFailed() || isGone) {
        continueFile();
    }
}

/// If the clock was set back, the unsigned difference is huge, so the check happens at once.
bool LiveFileAppender::isTimeToLook() const {
    return Time::now().microseconds() - lastLook_.microseconds() >= values_.recovery.microseconds();
}

void LiveFileAppender::followFile() {
    owner_.follow();
    if (!outputFileStream_.isOpen() || !outputFileStream_.isAt(livePath_)) {
        continueFile();
    }
}

void LiveFileAppender::continueFile() {
    outputFileStream_.close();
    openLiveFile(Platform::OutputFile::APPEND);
    currentSize_ = outputFileStream_.size() + keptSize();
    lastWritten_ = Time(outputFileStream_.lastWritten(), Util::TimeUtils::USEC);
    if (outputFileStream_.endsInPartialLine(livePath_, values_.fileRules())) {
        currentSize_ += write("\n");
        checkFile();
    }
}

void LiveFileAppender::openLiveFile(Platform::OutputFile::Mode mode) {
    lastLook_ = Time::now();
    outputFileStream_.open(livePath_, mode, values_.fileRules());
    if (outputFileStream_.hasFailed()) {
        throw LogException("Unable to open the file: " + values_.dir + "/" + liveName_);
    }
    openTime_ = lastLook_;
}

/// Another process may have moved the live file since the first of these lines was buffered.
void LiveFileAppender::writeLines(std::string_view text, std::size_t& written) {
    if (owner_.isBehind() && !owner_.mayRotate()) {
        followFile();
    }
    checkFile();
    written = write(text);
    checkFile();
}

/// A line that does not reach the file, on a full disk for example, is a failure, which callers report by
/// `checkFile`.
std::size_t LiveFileAppender::write(std::string_view text) {
    const std::size_t taken = writeBlocking(outputFileStream_, text);
    if (outputFileStream_.hasFailed()) {
        lastLook_ = Time::now();
    }
    return taken;
}

void LiveFileAppender::checkFile() const {
    if (outputFileStream_.hasFailed()) {
        throw LogException("outputFileStream_.fail()");
    }
}

std::string LiveFileAppender::pathOf(const std::string& fileName) const {
    return folder_ + "/" + fileName;
}

// The series of files with a digit

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
