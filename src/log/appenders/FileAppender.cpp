#include "log/appenders/FileAppender.h"

#include "log/LogException.h"
#include "log/layout/LineLayout.h"
#include "log/message/MessageFields.h"
#include "platform/Directory.h"
#include "platform/Files.h"
#include "zav-util/Conversions.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace ZAV {
namespace Log {

using Util::TimeUtils::Time;

namespace {

constexpr std::size_t LARGEST_KEPT_LINE = std::size_t{64} * 1024;

/// \return a number beyond every index if the name does not end in a digit
std::uint64_t indexOf(const std::string& fileName) {
    return static_cast<std::uint64_t>(fileName.back() - '0');
}

} // namespace

FileAppender::FileAppender(const std::string& name, bool synchronous, const Filters& filters,
                           const std::string& dir, const std::string& file, std::uint64_t fileNumber,
                           std::uint64_t fileMaxSize, const Time& fileMaxLifetime)
    : Appender(name, synchronous, filters), dir_(dir), file_(file),
      fileNumber_(std::min(fileNumber, HIGHEST_FILE_NUMBER)), fileMaxSize_(fileMaxSize),
      openTime_(Time::now()), fileMaxLifetime_(fileMaxLifetime) {}

void FileAppender::doOutput(const LogMessage& message) {
    const Platform::ScopedLock lock(criticalSection_);
    write(message);
}

void FileAppender::write(const LogMessage& message) {
    checkFile();
    renderLine(message);
    prepareFile(currentSize_ + line_.size());
    currentSize_ += line_.size();
    outputFile_.write(line_);
    checkFile(); // a line that did not reach the file, on a full disk for example, is reported
}

void FileAppender::renderLine(const LogMessage& message) {
    if (line_.capacity() > LARGEST_KEPT_LINE) {
        line_ = std::string();
    }
    line_.clear();
    appendLogLine(line_, message);
    line_ += '\n';
}

void FileAppender::checkFile() const {
    if (outputFile_.hasFailed()) {
        throw LogException("outputFileStream_.fail()");
    }
}

/// Sees to it that the live file is open and has room for the next line.
void FileAppender::prepareFile(std::uint64_t newSize) {
    if (!outputFile_.isOpen()) {
        browseFiles();
    } else if (newSize > fileMaxSize_ || isTooOld()) {
        outputFile_.close();
    } else {
        return;
    }
    rotateFiles();
    openFile();
}

bool FileAppender::isTooOld() const {
    return fileMaxLifetime_ != Time() && Time::now() > openTime_ + fileMaxLifetime_;
}

/// Finds the files that an earlier run left.
void FileAppender::browseFiles() {
    std::vector<std::string> entries;
    if (!Platform::listFiles(dir_, entries)) {
        const std::string pattern = dir_ + "/*";
        const int invalidHandle = -1;
        throw LogException(
            Util::format("FindFirstFile returned %d while trying to browse files by pattern %s",
                         invalidHandle, pattern.c_str()));
    }
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(fileNames_),
                 [this](const std::string& entry) { return isInSeries(entry); });
    std::sort(fileNames_.begin(), fileNames_.end());
}

bool FileAppender::isInSeries(const std::string& fileName) const {
    return fileName.size() == file_.size() + 1 && fileName.compare(0, file_.size(), file_) == 0 &&
           indexOf(fileName) <= fileNumber_;
}

/// Makes room for a new live file. It works from the highest index down, so that no file is renamed onto
/// another of the series; a file that cannot be deleted or renamed stays where it is.
void FileAppender::rotateFiles() {
    if (fileNames_.empty()) {
        return;
    }
    if (indexOf(fileNames_.back()) >= fileNumber_) {
        Platform::removeFile(pathOf(fileNames_.back()));
        fileNames_.pop_back();
    }
    for (auto fileName = fileNames_.rbegin(); fileName != fileNames_.rend(); ++fileName) {
        const std::string oldPath = pathOf(*fileName);
        ++fileName->back();
        Platform::renameFile(oldPath, pathOf(*fileName));
    }
}

void FileAppender::openFile() {
    const std::string fileName = file_ + "0";
    outputFile_.open(pathOf(fileName), Platform::OutputFile::TRUNCATE);
    if (outputFile_.hasFailed()) {
        throw LogException("Unable to open the file: " + pathOf(fileName));
    }
    fileNames_.push_front(fileName);
    currentSize_ = 0;
    openTime_ = Time::now();
}

std::string FileAppender::pathOf(const std::string& fileName) const {
    return dir_ + "/" + fileName;
}

} // namespace Log
} // namespace ZAV
