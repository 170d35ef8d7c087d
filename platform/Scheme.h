#pragma once

#include "base/RegularFile.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmere::platform {

struct SchemeRequest {
    std::optional<std::string> url;
    std::string method;               // "GET", "HEAD", ...
    std::optional<std::string> range; // the "Range" header, exactly as it came
};

struct SchemeResponse {
    int status = 200;
    std::string httpVersion;
    std::vector<std::pair<std::string, std::string>> headers;
};

/// A piece of a body; ownership moves without a copy.
struct Chunk {
    std::unique_ptr<std::byte[]> bytes;
    size_t size = 0;
};

/// One request of the page for an address of the private scheme. Main thread only, and never after the handler was told
/// to stop it. Its identity is its address.
class SchemeTask {
public:
    virtual ~SchemeTask() = default;
    virtual const SchemeRequest& request() const = 0;
    /// False when the platform can make no answer of it; the task then still waits for `didFail`.
    virtual bool didReceiveResponse(const SchemeResponse& response) = 0;
    virtual void didReceiveData(Chunk chunk) = 0;
    virtual void didFinish() = 0;
    virtual void didFail(const std::string& message) = 0;
    /// Runs the action once, on the main thread, at once or later: when the task can take another chunk, or is stopped.
    /// One at a time. A page may leave an answer unread for ever, so nothing waits meanwhile.
    virtual void whenReady(std::function<void()> action) = 0;
};

/// Serves the private scheme. Starts and stops arrive on the main thread.
class SchemeHandler {
public:
    virtual ~SchemeHandler() = default;
    virtual void start(std::shared_ptr<SchemeTask> task) = 0;
    virtual void stop(const SchemeTask& task) = 0;
    /// The open file behind an address, by the same rules as a request; throws what a request would fail with. For
    /// roads to the page beside the scheme. Any thread.
    virtual RegularFile open(const std::string& url) const = 0;
};

} // namespace quillmere::platform
