#include "prepare/ConversionQueue.h"

#include "base/Errors.h"

#include <algorithm>
#include <exception>
#include <iterator>

namespace quillmere {

struct ConversionQueue::Flight {
    bool isDone = false;
    std::exception_ptr failure{};
};

/// Whether there is room, and nobody newer who could begin.
bool ConversionQueue::isTurnOf(Requests::const_iterator request) const {
    return running_.at(static_cast<size_t>(request->kind)) < runningLimit &&
           std::none_of(
               std::next(request), waiting_.end(),
               [&](const Request& newer) {
                   return newer.kind == request->kind && !newer.superseded->stop_requested() &&
                          !flights_.contains(*newer.name);
               });
}

void ConversionQueue::run(const std::string& name, ConverterKind kind, const std::stop_token& superseded,
                          const std::function<void()>& work) {
    std::unique_lock lock(mutex_);
    const auto request = waiting_.insert(waiting_.end(), {.name = &name, .kind = kind, .superseded = &superseded});
    changed_.wait(lock, superseded, [&] { return flights_.contains(name) || isTurnOf(request); });
    waiting_.erase(request);
    changed_.notify_all(); // others may be the newest now
    if (superseded.stop_requested())
        throw CancellationError();

    const auto [position, isOurs] = flights_.try_emplace(name);
    if (!isOurs) {
        const auto flight = position->second;
        if (!changed_.wait(lock, superseded, [&] { return flight->isDone; }))
            throw CancellationError();
        if (flight->failure)
            std::rethrow_exception(flight->failure);
        return;
    }
    const auto flight = position->second = std::make_shared<Flight>();
    ++running(kind);
    lock.unlock();
    try {
        work();
    } catch (...) {
        flight->failure = std::current_exception();
    }
    lock.lock();
    --running(kind);
    flights_.erase(name);
    flight->isDone = true;
    changed_.notify_all();
    if (flight->failure)
        std::rethrow_exception(flight->failure);
}

} // namespace quillmere
