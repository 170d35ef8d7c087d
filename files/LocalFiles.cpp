#include "files/LocalFiles.h"

#include "base/Errors.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "files/AppAddress.h"
#include "platform/MainThread.h"

#include <algorithm>
#include <array>

namespace quillmere {

namespace {

constexpr std::string_view grantPrefix = "/__file/";
constexpr const char* unavailable = "The requested local file is unavailable.";

/// Ends the serving of a task that was stopped meanwhile: nothing more is delivered.
struct Stopped {};

std::string grantPath(const std::string& token, const FileUrl& file) {
    const std::string name = file.lastPathComponent();
    return std::string(grantPrefix) + token + "/" + (isValidUtf8(name) ? percentEncodePath(name) : "file");
}

} // namespace

/// One request on its way: how far its answer has come.
struct LocalFiles::Serving {
    std::shared_ptr<platform::SchemeTask> task;
    platform::SchemeRequest request;
    std::optional<RegularFile> source{}; // from the head on
    uint64_t offset = 0;
    uint64_t remaining = 0;
};

LocalFiles::LocalFiles(FileUrl resources, platform::Executors& executors, const platform::ContentTypes& contentTypes)
    : resources_(std::move(resources)), executors_(executors), contentTypes_(contentTypes) {}

std::string LocalFiles::grant(const FileUrl& file, std::optional<FileIdentity> identity) {
    std::string token = newUuid();
    const std::lock_guard guard(lock_);
    const auto known = std::ranges::find_if(files_, [&](const auto& entry) { return entry.second.file == file; });
    if (known != files_.end()) {
        known->second.identity = identity;
        return grantPath(known->first, file);
    }
    if (files_.size() >= capacity)
        files_.clear();
    files_.emplace(token, Granted{file, identity});
    return grantPath(token, file);
}

std::optional<FileUrl> LocalFiles::grantedFile(const std::string& path) const {
    const auto found = granted(path);
    return found ? std::optional(found->file) : std::nullopt;
}

std::optional<LocalFiles::Granted> LocalFiles::granted(const std::string& path) const {
    std::array<std::string_view, 2> pieces;
    size_t count = 0;
    std::string_view rest = path;
    while (!rest.empty() && count < pieces.size()) {
        const auto slash = std::min(rest.find('/'), rest.size());
        if (slash > 0)
            pieces[count++] = rest.substr(0, slash);
        rest.remove_prefix(std::min(slash + 1, rest.size()));
    }
    if (count < 2 || pieces[0] != "__file")
        return std::nullopt;
    const std::lock_guard guard(lock_);
    const auto found = files_.find(std::string(pieces[1]));
    return found == files_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<FileUrl> LocalFiles::resolve(const std::string& url) const {
    const auto found = target(url);
    return found ? std::optional(found->file) : std::nullopt;
}

RegularFile LocalFiles::open(const std::string& url) const {
    const auto found = target(url);
    if (!found)
        throw FileFailure(unavailable);
    return open(*found);
}

RegularFile LocalFiles::open(const Granted& target) const {
    RegularFile file(target.file);
    if (target.identity && file.identity() != *target.identity)
        throw FileFailure(unavailable);
    return file;
}

std::optional<LocalFiles::Granted> LocalFiles::target(const std::string& url) const {
    const auto path = appPath(url);
    if (!path)
        return std::nullopt;
    if (path->starts_with(grantPrefix))
        return granted(*path);
    const std::string relative = *path == "/" ? "index.html" : path->substr(std::min<size_t>(1, path->size()));
    const FileUrl root = resources_.appending("app").standardized().resolvingSymlinks();
    const FileUrl candidate = root.appending(relative).standardized().resolvingSymlinks();
    if (!candidate.path().starts_with(root.path() + "/"))
        return std::nullopt;
    return Granted{candidate, std::nullopt};
}

std::string LocalFiles::mime(const FileUrl& file, const platform::ContentTypes& contentTypes) {
    static constexpr std::pair<std::string_view, std::string_view> table[] = {
        {"js", "text/javascript"},  {"mjs", "text/javascript"},   {"css", "text/css"},
        {"html", "text/html"},      {"wasm", "application/wasm"}, {"svg", "image/svg+xml"},
        {"pdf", "application/pdf"}, {"mov", "video/quicktime"},   {"mp4", "video/mp4"},
        {"m4a", "audio/mp4"},
    };
    const std::string extension = file.lowerExtension();
    for (const auto& [known, type] : table)
        if (extension == known)
            return std::string(type);
    if (!extension.empty())
        if (auto type = contentTypes.mimeType(extension))
            return *type;
    return "application/octet-stream";
}

void LocalFiles::start(std::shared_ptr<platform::SchemeTask> task) {
    platform::assertMainThread(executors_.main());
    {
        const std::lock_guard guard(lock_);
        active_.insert(task.get());
    }
    auto request = task->request();
    submit(std::make_shared<Serving>(Serving{.task = std::move(task), .request = std::move(request)}));
}

void LocalFiles::stop(const platform::SchemeTask& task) {
    platform::assertMainThread(executors_.main());
    forget(task);
}

size_t LocalFiles::activeTasks() const {
    const std::lock_guard guard(lock_);
    return active_.size();
}

void LocalFiles::submit(ServingRef serving) {
    executors_.userInitiated().submit(
        [weak = weak_from_this(), main = &executors_.main(), serving = std::move(serving)]() mutable {
            if (const auto self = weak.lock())
                self->serve(serving);
            if (!serving)
                return; // it goes on when the task is ready
            serving->source.reset();
            // The task belongs to the main thread, and so does its end.
            main->post([task = std::move(serving->task)] {});
        });
}

void LocalFiles::serve(ServingRef& serving) {
    auto& task = *serving->task;
    std::string failure;
    try {
        if (!advance(serving))
            return;
        deliver(task, [&] { task.didFinish(); });
        forget(task);
        return;
    } catch (const Stopped&) {
        return;
    } catch (const std::exception& error) {
        failure = userMessage(error);
    }
    deliver(task, [&] { task.didFail(failure); });
    forget(task);
}

/// Delivers one chunk, after the head where that is still to come. False when there is more to do: then the task has
/// taken the serving over, and nothing of it may be touched.
bool LocalFiles::advance(ServingRef& serving) {
    auto& task = *serving->task;
    if (!serving->source)
        begin(*serving);
    if (serving->remaining == 0)
        return true;
    const size_t count = static_cast<size_t>(std::min<uint64_t>(serving->remaining, chunkSize));
    platform::Chunk chunk{.bytes = std::make_unique_for_overwrite<std::byte[]>(count), .size = 0};
    chunk.size = serving->source->read(serving->offset, chunk.bytes.get(), count);
    if (chunk.size == 0)
        return true; // the file has shrunk
    serving->offset += chunk.size;
    serving->remaining -= chunk.size;
    const bool isLast = serving->remaining == 0;
    const bool delivered = deliver(task, [&] {
        task.didReceiveData(std::move(chunk));
        if (!isLast)
            task.whenReady([weak = weak_from_this(), serving = std::move(serving)]() mutable {
                if (const auto self = weak.lock())
                    self->submit(std::move(serving));
            });
    });
    if (!delivered)
        throw Stopped();
    return isLast;
}

void LocalFiles::begin(Serving& serving) {
    const auto wanted = serving.request.url ? target(*serving.request.url) : std::nullopt;
    if (!wanted)
        throw FileFailure(unavailable);
    serving.source = open(*wanted);
    const uint64_t size = serving.source->size();
    const ByteRange range = byteRange(serving.request.range, size);

    const platform::SchemeResponse head = response(wanted->file, range, size);
    bool accepted = false;
    if (!deliver(*serving.task, [&] { accepted = serving.task->didReceiveResponse(head); }))
        throw Stopped();
    if (!accepted)
        throw FileFailure("Invalid local file response.");
    serving.offset = range.start;
    serving.remaining = serving.request.method == "HEAD" ? 0 : range.length;
}

platform::SchemeResponse LocalFiles::response(const FileUrl& file, const ByteRange& range, uint64_t size) const {
    platform::SchemeResponse head{.status = range.partial ? 206 : 200,
                                  .httpVersion = "HTTP/1.1",
                                  .headers = {{"Content-Type", mime(file, contentTypes_)},
                                              {"Content-Length", std::to_string(range.length)},
                                              {"Accept-Ranges", "bytes"},
                                              {"Access-Control-Allow-Origin", "*"},
                                              {"Cache-Control", "no-store"}}};
    if (range.partial)
        head.headers.emplace_back("Content-Range", "bytes " + std::to_string(range.start) + "-" +
                                                       std::to_string(range.start + range.length - 1) + "/" +
                                                       std::to_string(size));
    return head;
}

/// Runs the action on the main thread, where stops arrive too: no call reaches a task after its stop.
bool LocalFiles::deliver(const platform::SchemeTask& task, const std::function<void()>& action) {
    bool ran = false;
    executors_.main().runSync([&] {
        if (!isActive(task))
            return;
        action();
        ran = true;
    });
    return ran;
}

bool LocalFiles::isActive(const platform::SchemeTask& task) const {
    const std::lock_guard guard(lock_);
    return active_.contains(&task);
}

void LocalFiles::forget(const platform::SchemeTask& task) {
    const std::lock_guard guard(lock_);
    active_.erase(&task);
}

} // namespace quillmere
