#pragma once

#include "platform/gtk/glib/GObjectRef.h"

#include <webkit/webkit.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace quillmere::platform::gtk {

/// Keeps the web view off every network: a content filter that lets pass only the private scheme's host and blob, data
/// and about addresses. It is compiled anew at each start, in a few milliseconds, so no stored rules can be stale or
/// tampered with. Main thread only.
class NetworkFilter {
public:
    enum class State { compiling, installed, failed };

    /// Begins to compile the filter; it is installed when it is done, while the main loop turns. The compiler needs a
    /// folder for a moment: the first that can be written to.
    NetworkFilter(WebKitUserContentManager* manager, const std::string& scheme, const std::string& host,
                  std::vector<std::string> folders = standardFolders());
    /// The temporary folder, and in its place the user's runtime and cache folders.
    static std::vector<std::string> standardFolders();

    /// Turns the main loop until the filter is installed or has failed, at most until `limit` has passed.
    State wait(std::chrono::milliseconds limit);
    State state() const noexcept;
    /// The sentence for a filter that has failed, with the folders that could not be used.
    std::string failure() const;

    /// The rules, as the filter compiler reads them.
    static std::string rules(const std::string& scheme, const std::string& host);

private:
    class Compilation;
    std::shared_ptr<Compilation> compilation_;
};

} // namespace quillmere::platform::gtk
