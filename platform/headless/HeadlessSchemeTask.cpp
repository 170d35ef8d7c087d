#include "platform/headless/HeadlessSchemeTask.h"

#include <utility>

namespace quillmere::platform {

bool HeadlessSchemeTask::didReceiveResponse(const SchemeResponse& answer) {
    if (refusesResponse)
        return false;
    response = answer;
    return true;
}

void HeadlessSchemeTask::didReceiveData(Chunk chunk) {
    body.append(reinterpret_cast<const char*>(chunk.bytes.get()), chunk.size);
    chunkSizes.push_back(chunk.size);
    if (allowance_ && *allowance_ > 0)
        --*allowance_;
}

void HeadlessSchemeTask::whenReady(std::function<void()> action) {
    waiting_ = std::move(action);
    if (!allowance_ || *allowance_ > 0)
        proceed();
}

void HeadlessSchemeTask::allow(size_t count) {
    allowance_ = allowance_.value_or(0) + count;
    if (*allowance_ > 0)
        proceed();
}

void HeadlessSchemeTask::proceed() {
    if (const auto action = std::exchange(waiting_, nullptr))
        action();
}

std::optional<std::string> HeadlessSchemeTask::header(const std::string& name) const {
    if (response)
        for (const auto& [key, value] : response->headers)
            if (key == name)
                return value;
    return std::nullopt;
}

} // namespace quillmere::platform
