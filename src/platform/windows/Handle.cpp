#include "platform/windows/Handle.h"

#include <sddl.h>
#include <vector>

namespace ZAV {
namespace Platform {

Handle makeEvent() {
    Handle event(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    if (!event.isOpen()) {
        throw systemFailure();
    }
    return event;
}

std::string identifierText(PSID identifier) {
    char* text = nullptr;
    if (!ConvertSidToStringSidA(identifier, &text)) {
        throw systemFailure();
    }
    std::string result(text);
    LocalFree(text);
    return result;
}

std::string userIdentifier() {
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) {
        throw systemFailure();
    }
    const Handle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<unsigned char> buffer(size);
    if (!GetTokenInformation(token.get(), TokenUser, buffer.data(), size, &size)) {
        throw systemFailure();
    }
    return identifierText(reinterpret_cast<const TOKEN_USER*>(buffer.data())->User.Sid);
}

UserOnly::UserOnly() {
    // Owned by the user rather than a group; inherits nothing; one entry, which grants the user full access.
    const std::string user = userIdentifier();
    const std::string description = "O:" + user + "D:P(A;;GA;;;" + user + ")";
    attributes_.nLength = sizeof attributes_;
    attributes_.bInheritHandle = FALSE;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorA(description.c_str(), SDDL_REVISION_1,
                                                              &attributes_.lpSecurityDescriptor, nullptr)) {
        throw systemFailure();
    }
}

UserOnly::~UserOnly() {
    LocalFree(attributes_.lpSecurityDescriptor);
}

} // namespace Platform
} // namespace ZAV
