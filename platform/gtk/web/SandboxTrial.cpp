#include "platform/gtk/web/SandboxTrial.h"

#include <cstdlib>
#include <exception>
#include <string_view>
#include <unistd.h>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* sandbox = "/usr/bin/bwrap";
constexpr std::chrono::seconds limit{10};

constexpr const char* missing =
    "The viewer runs in a sandbox, and “/usr/bin/bwrap” is missing. Install the package “bubblewrap”.";
constexpr const char* refused =
    "The viewer runs in a sandbox, and this system does not let programs make one. Allow user namespaces, for example "
    "with “sysctl kernel.unprivileged_userns_clone=1” and “sysctl user.max_user_namespaces=10000”.";

/// The user may know better; the program never says so by itself.
bool isSwitchedOffByUser() {
    const char* off = std::getenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");
    return off && std::string_view(off) == "1";
}

} // namespace

SandboxTrial::SandboxTrial() {
    if (isSwitchedOffByUser())
        return;
    if (::access(sandbox, X_OK) != 0) {
        failure_ = missing;
        return;
    }
    try {
        trial_.emplace(ProcessSpec{.executable = FileUrl(sandbox),
                                   .arguments = {"--unshare-all", "--die-with-parent", "--ro-bind", "/", "/", "--proc",
                                                 "/proc", "--dev", "/dev", "--", "/bin/true"}});
    } catch (const std::exception&) {
        failure_ = refused;
    }
}

std::optional<std::string> SandboxTrial::failure() {
    // One that does not come to an end in time tells nothing.
    if (trial_ && trial_->waitUntil(steadyNow() + limit) && !trial_->wait().isSuccess())
        failure_ = refused;
    trial_.reset();
    return failure_;
}

} // namespace quillmere::platform::gtk
