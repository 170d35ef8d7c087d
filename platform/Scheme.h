#pragma once

#include "base/FileUrl.h"

#include <cstddef>
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

/// One request of the page for an address of the private scheme. Except for `awaitCapacity`, main thread only, and
/// never after the handler was told to stop it. Its identity is its address.
class SchemeTask {
public:
    virtual ~SchemeTask() = default;
    virtual const SchemeRequest& request() const = 0;
    /// False when the platform can make no answer of it; the task then still waits for `didFail`.
    virtual bool didReceiveResponse(const SchemeResponse& response) = 0;
    virtual void didReceiveData(Chunk chunk) = 0;
    virtual void didFinish() = 0;
    virtual void didFail(const std::string& message) = 0;
    /// Waits until the task can take another chunk or is stopped. Called on the serving thread, never on the main one.
    virtual void awaitCapacity() = 0;
};

/// Serves the private scheme. Starts and stops arrive on the main thread.
class SchemeHandler {
public:
    virtual ~SchemeHandler() = default;
    virtual void start(std::shared_ptr<SchemeTask> task) = 0;
    virtual void stop(const SchemeTask& task) = 0;
    /// The file behind an address, by the same rules as a request: for media elements, which read it themselves. Any
    /// thread.
    virtual std::optional<FileUrl> fileFor(const std::string& url) const = 0;
};

} // namespace quillmere::platform
