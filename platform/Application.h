#pragma once

#include "base/FileUrl.h"
#include "platform/Menu.h"

#include <vector>

namespace quillmere::platform {

enum class OpenReply { success, cancel, failure };

/// What the application tells its delegate, on the main thread.
class ApplicationClient {
public:
    virtual ~ApplicationClient() = default;
    virtual void applicationDidFinishLaunching() = 0;
    virtual OpenReply applicationOpenFiles(const std::vector<FileUrl>& files) = 0;
    virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
    /// Only actions whose target is the delegate.
    virtual void performMenuAction(MenuAction action) = 0;
};

/// The life of the process. Main thread only.
class Application {
public:
    virtual ~Application() = default;
    /// Runs the event loop until the application ends and returns the exit status. Files handed over at launch arrive
    /// through `applicationOpenFiles` before `applicationDidFinishLaunching` has read the command line.
    virtual int run(ApplicationClient& client) = 0;
    virtual void terminate() = 0;
    /// Brings the application to the front, in front of others.
    virtual void activate() = 0;
    virtual void setMainMenu(MenuSpec menu) = 0;
    /// The command line, the executable's path first.
    virtual const std::vector<std::string>& arguments() const = 0;
};

} // namespace quillmere::platform
