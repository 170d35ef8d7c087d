#pragma once

#include "platform/Platform.h"
#include "platform/common/Confinement.h"
#include "platform/common/FolderBundle.h"
#include "platform/common/NullMediaExporter.h"
#include "platform/common/PlistDefaults.h"
#include "platform/common/UserFolders.h"
#include "platform/common/WorkerImageCodec.h"
#include "platform/gtk/DesktopToolkit.h"
#include "platform/gtk/desktop/DesktopApplication.h"
#include "platform/gtk/desktop/DesktopServices.h"
#include "platform/gtk/desktop/DesktopWorkspace.h"
#include "platform/gtk/glib/MainLoopExecutor.h"
#include "platform/gtk/panels/DesktopDialogs.h"
#include "platform/gtk/web/SandboxTrial.h"

namespace quillmere::platform::gtk {

/// The desktop: everything that the program needs of GTK, WebKitGTK and GIO. Made in `main` after `claimInstance`, and
/// destroyed after the delegate.
class DesktopPlatform {
public:
    DesktopPlatform(std::vector<std::string> arguments, InstanceRole role);
    ~DesktopPlatform();
    DesktopPlatform(const DesktopPlatform&) = delete;
    DesktopPlatform& operator=(const DesktopPlatform&) = delete;

    Platform seam();
    /// Programs that touch untrusted bytes run in it.
    const Confinement& confinement() const { return confinement_; }

    /// Runs the application to its end. From then on no work reaches the main thread, and what was changed in the
    /// defaults is on the disk.
    int run(ApplicationClient& client);

private:
    SandboxTrial sandbox_; // begins before all that it need not wait for
    DesktopExecutors executors_;
    FolderBundle bundle_ = FolderBundle::ofRunningProgram();
    Directories directories_ = userDirectories();
    std::unique_ptr<Executor> defaultsWriter_;
    PlistDefaults defaults_;
    DesktopApplication application_;
    DesktopDialogs dialogs_;
    DesktopToolkit toolkit_;
    DesktopPasteboard pasteboard_;
    DesktopContentTypes contentTypes_;
    DesktopWorkspace workspace_;
    Confinement confinement_;
    WorkerImageCodec images_;
    NullMediaExporter mediaExporter_;
};

} // namespace quillmere::platform::gtk
