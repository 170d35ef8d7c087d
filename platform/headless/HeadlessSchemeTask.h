#pragma once

#include "platform/Scheme.h"

#include <functional>

namespace quillmere::platform {

/// One request for the private scheme, recorded in memory. It can refuse the response and hold back the body like a
/// page that does not read. Main thread only.
class HeadlessSchemeTask : public SchemeTask {
public:
    explicit HeadlessSchemeTask(SchemeRequest request) : request_(std::move(request)) {}

    const SchemeRequest& request() const override { return request_; }
    bool didReceiveResponse(const SchemeResponse& answer) override;
    void didReceiveData(Chunk chunk) override;
    void didFinish() override { finished = true; }
    void didFail(const std::string& message) override { failure = message; }
    void whenReady(std::function<void()> action) override;

    bool isOver() const { return finished || failure; }
    std::optional<std::string> header(const std::string& name) const;
    /// Lets `count` more chunks through; once called, no other is.
    void allow(size_t count);
    /// The page no longer wants the answer. The handler is told apart from this.
    void stop() { proceed(); }

    bool refusesResponse = false;
    std::optional<SchemeResponse> response;
    std::string body;
    std::vector<size_t> chunkSizes;
    bool finished = false;
    std::optional<std::string> failure;

private:
    void proceed();

    const SchemeRequest request_;
    std::optional<size_t> allowance_;
    std::function<void()> waiting_;
};

} // namespace quillmere::platform
