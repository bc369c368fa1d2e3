#pragma once

/// \file
/// What is thrown for a property file that cannot be read:
///
///     #include "zav-util/Properties.h"
///
///     bool isReadable(const std::string& fileName) {
///         try {
///             ZAV::Util::Properties properties(fileName);
///             return true;
///         } catch (const ZAV::Util::UtilException&) {
///             return false;
///         }
///     }

#include "zav-util/Export.h"

#include <stdexcept>
#include <string>

namespace ZAV {
namespace Util {

/// An error of the utilities: an unreadable or malformed property file, or a text that is not a number.
class ZAV_LOG_API UtilException : public std::runtime_error {
public:
    /// \param message the text that `what()` returns
    explicit UtilException(const std::string& message);

    /// `what()` returns the message, " from ", the file, ":" and the line.
    /// \param message what went wrong
    /// \param file name of the source file that throws it
    /// \param line line of that source file, counted from 1
    UtilException(const std::string& message, const std::string& file, int line);

    ~UtilException() override;
};

} // namespace Util
} // namespace ZAV
