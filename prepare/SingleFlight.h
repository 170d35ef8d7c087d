#pragma once

#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <string>

namespace quillmere {

/// Does work once for all who want it at the same time: the first caller with a name does it, the others wait and share
/// its end, an exception included. Any thread; the work must not ask for its own name.
class SingleFlight {
public:
    void run(const std::string& name, const std::function<void()>& work);

private:
    std::mutex mutex_;
    std::map<std::string, std::shared_future<void>> flights_;
};

} // namespace quillmere
