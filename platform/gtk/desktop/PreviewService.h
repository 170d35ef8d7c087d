#pragma once

#include "base/FileUrl.h"
#include "platform/gtk/glib/Signals.h"

#include <optional>
#include <string>

#include <gtk/gtk.h>

namespace quillmere::platform::gtk {

/// Answers the file manager that asks for previews on the session bus. A preview is the program's own window; while it
/// shows one, Space and Escape close it and the arrow keys are passed on to the file manager's selection. Main thread.
class PreviewService {
public:
    /// What it needs of the application around it.
    class Host {
    public:
        virtual ~Host() = default;
        virtual void openPreview(const FileUrl& file) = 0;
        virtual void closePreview() = 0;
    };

    explicit PreviewService(Host& host) : host_(host) {}
    ~PreviewService();
    PreviewService(const PreviewService&) = delete;
    PreviewService& operator=(const PreviewService&) = delete;

    /// Takes the name on this bus; it is there from then on for whoever asks.
    void serve(GDBusConnection* bus);
    /// Keys of the window go by here first.
    void watchKeys(GtkWindow* window);
    /// Something else is shown now, so the window keeps its keys.
    void endPreview();

    const std::optional<FileUrl>& file() const noexcept { return file_; }

private:
    static const GDBusInterfaceVTable& calls();
    void call(const std::string& method, GVariant* parameters, GDBusMethodInvocation* invocation);
    void showFile(GVariant* parameters, GDBusMethodInvocation* invocation);
    GVariant* property(const std::string& name) const;
    gboolean keyPressed(guint key, GdkModifierType modifiers);
    void tellVisible();

    Host& host_;
    GObjectRef<GDBusConnection> bus_;
    guint registration_ = 0;
    guint name_ = 0;
    std::optional<FileUrl> file_; // that is shown as a preview
    std::string parentHandle_;
};

/// Whether the session bus would start this program for previews.
bool answersPreviews(const FileUrl& program);

} // namespace quillmere::platform::gtk
