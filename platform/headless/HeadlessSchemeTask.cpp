#include "platform/headless/HeadlessSchemeTask.h"

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
}

void HeadlessSchemeTask::awaitCapacity() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [&] { return !allowance_ || *allowance_ > 0; });
    if (allowance_)
        --*allowance_;
}

void HeadlessSchemeTask::allow(size_t count) {
    {
        const std::lock_guard guard(lock_);
        allowance_ = allowance_.value_or(0) + count;
    }
    changed_.notify_all();
}

std::optional<std::string> HeadlessSchemeTask::header(const std::string& name) const {
    if (response)
        for (const auto& [key, value] : response->headers)
            if (key == name)
                return value;
    return std::nullopt;
}

} // namespace quillmere::platform
