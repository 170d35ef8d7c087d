#pragma once

#include "base/FileDescriptor.h"
#include "base/FileUrl.h"
#include "platform/Executors.h"
#include "platform/Scheme.h"
#include "platform/gtk/glib/Signals.h"

#include <webkit/webkit.h>

#include <memory>
#include <string>

namespace quillmere::platform::gtk {

/// Answers the web process's questions for the files behind media addresses, by the same rules as any other request.
/// Main thread only; files are opened on a worker, since a file system may take its time.
class MediaResolver {
public:
    /// `extensions` is the folder of the media extension. Before the context's first load; the references outlive this.
    MediaResolver(WebKitWebContext* context, const FileUrl& extensions, const SchemeHandler& handler,
                  Executors& executors);
    ~MediaResolver();

    /// Whether the extension of some web process has reported in: without it no media element plays.
    bool extensionReported() const noexcept;

    /// Opens a regular file for reading. None for anything else, or when it cannot be opened; never waits for a pipe.
    static FileDescriptor openMedia(const FileUrl& file) noexcept;

private:
    class Answers;
    std::shared_ptr<Answers> answers_;
    SignalConnection received_;
};

} // namespace quillmere::platform::gtk
