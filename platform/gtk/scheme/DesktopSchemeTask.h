#pragma once

#include "platform/Scheme.h"
#include "platform/gtk/scheme/SchemeStream.h"

#include <webkit/webkit.h>

namespace quillmere::platform::gtk {

/// One request of the web view for the private scheme. The web view learns of a stop only once an answer has begun, so
/// the answer begins with the task, and status and headers follow before its first byte.
class DesktopSchemeTask final : public platform::SchemeTask {
public:
    /// Takes the request over. `onStop` runs when the web view stops it, on the main thread.
    DesktopSchemeTask(WebKitURISchemeRequest* request, std::shared_ptr<SchemeFlow> flow, std::function<void()> onStop);

    const SchemeRequest& request() const override { return request_; }
    bool didReceiveResponse(const SchemeResponse& response) override;
    void didReceiveData(Chunk chunk) override { body_->push(std::move(chunk)); }
    void didFinish() override;
    void didFail(const std::string& message) override;
    void whenReady(std::function<void()> action) override { body_->whenReady(std::move(action)); }

    /// Ends the task from our side, as if the web view had stopped it.
    void stop() { body_->stop(); }

private:
    SchemeRequest request_;
    std::shared_ptr<SchemeStream> body_;
    GObjectRef<WebKitURISchemeResponse> response_; // until it is complete
};

} // namespace quillmere::platform::gtk
