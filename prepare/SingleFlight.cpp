#include "prepare/SingleFlight.h"

#include <exception>

namespace quillmere {

void SingleFlight::run(const std::string& name, const std::function<void()>& work) {
    std::promise<void> ours;
    std::shared_future<void> flight;
    bool isFirst = false;
    {
        const std::lock_guard lock(mutex_);
        const auto [position, added] = flights_.try_emplace(name);
        isFirst = added;
        if (added)
            position->second = ours.get_future().share();
        flight = position->second;
    }
    if (isFirst) {
        std::exception_ptr failure;
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        {
            const std::lock_guard lock(mutex_);
            flights_.erase(name);
        }
        if (failure)
            ours.set_exception(failure);
        else
            ours.set_value();
    }
    flight.get();
}

} // namespace quillmere
