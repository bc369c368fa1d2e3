#pragma once

#include "zav-util/Properties.h"

#include <string>

namespace ZAV {
namespace Tools {

/// \return the properties with folders in which no file can be, and without a queue file, so that what is made on trial
///         finds nothing of the program's
Util::Properties withoutFolders(const Util::Properties& properties);

/// Lets the library itself judge a configuration, by an `init` and a `finish` of this process.
/// \return the text that `init` throws or, if it does not, the first line that it reports on the standard error
///         stream; empty if it is content
std::string complaintOfInit(const Util::Properties& properties);

} // namespace Tools
} // namespace ZAV
