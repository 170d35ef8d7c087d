#pragma once

#include "platform/Dialogs.h"
#include "platform/gtk/glib/Signals.h"

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// A dialog that lets the user choose one file or folder. The toolkit's own offers either files or folders; this one
/// takes both, and a folder is chosen by "Open" and entered by a double click. One with a message is our own too. Main
/// thread only.
class FilePanel {
public:
    using Completion = std::function<void(std::optional<FileUrl>)>;

    /// Shows the panel over `parent`, beginning in `folder`. The completion runs once, and may destroy the panel.
    FilePanel(GtkWindow* parent, const OpenPanelSpec& spec, const FileUrl& folder, Completion completion);
    ~FilePanel();
    FilePanel(const FilePanel&) = delete;
    FilePanel& operator=(const FilePanel&) = delete;

    void present();

private:
    void buildOwn(GtkWindow* parent, const OpenPanelSpec& spec);
    void buildNative(GtkWindow* parent, const OpenPanelSpec& spec);
    void accept();
    void finish(GFile* file);

    Completion completion_;
    bool takesFolders_;
    GObjectRef<GtkWindow> window_;            // of a panel of our own
    GtkFileChooser* chooser_ = nullptr;       // in that window
    GObjectRef<GtkFileChooserNative> native_; // of the panel for one kind
    SignalConnections connections_;
    LoopTimer answering_;
};

} // namespace quillmere::platform::gtk
