#pragma once

#include <array>
#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>

namespace quillmere {

enum class ConverterKind { image, office, media };

/// Decides which conversion runs when: of one name at most one, of one kind at most two, the newest request first. What
/// runs is never stopped; what nobody waits for any more is not begun. Any thread.
class ConversionQueue {
public:
    static constexpr int runningLimit = 2;

    /// Returns when work of this name has been done since the call, by this thread or by another that asked for the
    /// same, whose failure is then thrown here too. Throws CancellationError when the request is superseded first.
    void run(const std::string& name, ConverterKind kind, const std::stop_token& superseded,
             const std::function<void()>& work);

private:
    struct Flight;
    struct Request {
        const std::string* name;
        ConverterKind kind;
        const std::stop_token* superseded;
    };
    using Requests = std::list<Request>;

    bool isTurnOf(Requests::const_iterator request) const;
    int& running(ConverterKind kind) { return running_.at(static_cast<size_t>(kind)); }

    std::mutex mutex_;
    std::condition_variable_any changed_;
    Requests waiting_; // the newest last
    std::map<std::string, std::shared_ptr<Flight>> flights_;
    std::array<int, 3> running_{};
};

} // namespace quillmere
