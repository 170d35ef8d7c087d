#pragma once

#include "platform/Executors.h"
#include "platform/Scheme.h"
#include "platform/gtk/glib/Signals.h"

#include <webkit/webkit.h>

#include <memory>
#include <string>

namespace quillmere::platform::gtk {

/// Answers the web process's questions for the bytes behind addresses, by the same rules as any other request: ranges
/// for the page's script, and files for media elements. Main thread only; files are opened on a worker, since a file
/// system may take its time.
class FileReads {
public:
    /// `extensions` is the folder of the extension. Before the context's first load; the references outlive this.
    FileReads(WebKitWebContext* context, const FileUrl& extensions, const SchemeHandler& handler, Executors& executors);
    ~FileReads();

private:
    class Answers;
    std::shared_ptr<Answers> answers_;
    SignalConnection received_;
};

} // namespace quillmere::platform::gtk
