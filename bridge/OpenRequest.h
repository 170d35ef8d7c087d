#pragma once

#include "base/FileIdentity.h"
#include "base/FileUrl.h"

#include <optional>
#include <string>
#include <variant>

namespace quillmere {

/// What is to be opened, by whatever way it came in.
struct OpenRequest {
    FileUrl file;
    std::optional<std::string> containerToken{}; // of the session that it was chosen in
    std::optional<std::string> displayName{};    // where the file's own name is not what the user knows it by
    /// Of the very file that was checked when it was chosen in a container. Such a request is for a document, and
    /// whatever has taken the file's name meanwhile is refused.
    std::optional<FileIdentity> identity{};
};

/// A listing that is shown again.
struct ContainerToRefresh {
    std::string token;
};

/// What waits until the page is ready, or what the page shows: at most one thing.
using PendingOpen = std::variant<std::monostate, OpenRequest, ContainerToRefresh>;

} // namespace quillmere
