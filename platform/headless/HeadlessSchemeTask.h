#pragma once

#include "platform/Scheme.h"

#include <condition_variable>
#include <mutex>

namespace quillmere::platform {

/// One request for the private scheme, recorded in memory. It can refuse the response and hold back the body like a
/// page that does not read.
class HeadlessSchemeTask : public SchemeTask {
public:
    explicit HeadlessSchemeTask(SchemeRequest request) : request_(std::move(request)) {}

    const SchemeRequest& request() const override { return request_; }
    bool didReceiveResponse(const SchemeResponse& answer) override;
    void didReceiveData(Chunk chunk) override;
    void didFinish() override { finished = true; }
    void didFail(const std::string& message) override { failure = message; }
    void awaitCapacity() override;

    bool isOver() const { return finished || failure; }
    std::optional<std::string> header(const std::string& name) const;
    /// Lets `count` more chunks through; once called, no other is.
    void allow(size_t count);

    bool refusesResponse = false;
    std::optional<SchemeResponse> response;
    std::string body;
    std::vector<size_t> chunkSizes;
    bool finished = false;
    std::optional<std::string> failure;

private:
    const SchemeRequest request_;
    std::mutex lock_;
    std::condition_variable changed_;
    std::optional<size_t> allowance_;
};

} // namespace quillmere::platform
