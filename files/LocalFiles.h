#pragma once

#include "base/FileIdentity.h"
#include "files/ByteRange.h"
#include "platform/Executors.h"
#include "platform/Scheme.h"
#include "platform/Services.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace quillmere {

/// Decides which local files the page may read, and serves them: the page's own resources, and each file that was
/// granted to it under an unguessable token. One object for the life of the process; owned by a shared pointer, since
/// serving threads hold it weakly. Grants and lookups from any thread. No thread waits for a page that does not read:
/// an answer goes on when the task says that it can.
class LocalFiles : public platform::SchemeHandler, public std::enable_shared_from_this<LocalFiles> {
public:
    static constexpr size_t capacity = 64;
    static constexpr size_t chunkSize = 262'144;

    /// `resources` holds the page in its folder "app". The references outlive the object.
    LocalFiles(FileUrl resources, platform::Executors& executors, const platform::ContentTypes& contentTypes);

    /// Lets the page read the file; the path under which it can fetch it. The same file keeps its path until the table
    /// is full: one grant more than the capacity drops all the others.
    /// With an identity, only the very file that was checked is served, not what takes its name later.
    std::string grant(const FileUrl& file, std::optional<FileIdentity> identity = std::nullopt);
    /// The granted file that a decoded request path names.
    std::optional<FileUrl> grantedFile(const std::string& path) const;
    /// The file that a request URL stands for. Does not ask whether it exists.
    std::optional<FileUrl> resolve(const std::string& url) const;

    static ByteRange byteRange(std::optional<std::string_view> header, uint64_t size) {
        return quillmere::byteRange(header, size);
    }
    static std::string mime(const FileUrl& file, const platform::ContentTypes& contentTypes);

    void start(std::shared_ptr<platform::SchemeTask> task) override;
    void stop(const platform::SchemeTask& task) override;
    RegularFile open(const std::string& url) const override;

    /// How many tasks are neither finished nor stopped.
    size_t activeTasks() const;

private:
    struct Granted {
        FileUrl file;
        std::optional<FileIdentity> identity;
    };
    struct Serving;
    using ServingRef = std::shared_ptr<Serving>; // one owner at a time

    void submit(ServingRef serving);
    void serve(ServingRef& serving);
    bool advance(ServingRef& serving);
    void begin(Serving& serving);
    RegularFile open(const Granted& target) const;
    std::optional<Granted> target(const std::string& url) const;
    std::optional<Granted> granted(const std::string& path) const;
    platform::SchemeResponse response(const FileUrl& file, const ByteRange& range, uint64_t size) const;
    bool deliver(const platform::SchemeTask& task, const std::function<void()>& action);
    bool isActive(const platform::SchemeTask& task) const;
    void forget(const platform::SchemeTask& task);

    const FileUrl resources_;
    platform::Executors& executors_;
    const platform::ContentTypes& contentTypes_;
    mutable std::mutex lock_; // guards the next two; never held while a task is called
    std::unordered_map<std::string, Granted> files_;
    std::unordered_set<const platform::SchemeTask*> active_;
};

} // namespace quillmere
