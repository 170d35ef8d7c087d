#pragma once

#include "base/Clock.h"
#include "base/FileUrl.h"
#include "base/Json.h"
#include "containers/ArchiveWork.h"
#include "containers/ConfinedFolder.h"
#include "containers/FileFacts.h"
#include "containers/NaturalOrder.h"
#include "containers/PreviewCache.h"
#include "containers/Session.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

namespace quillmere {

/// A document to be opened: a regular file inside the chosen folder or the cache, reached without a link. The identity
/// is what was checked; whoever opens the path later can make sure of it.
struct OpenedFile {
    FileUrl file;
    std::string name;
    FileIdentity identity;
};

/// A listing record for the page, or a document.
using ContainerOpenResult = std::variant<JsonObject, OpenedFile>;

/// Walks folders and archives, one level at a time, in sessions that the page knows by their tokens. Operations block;
/// they run one at a time, on any thread but the main one. They throw ContainerError, failures of the file system
/// (std::filesystem::filesystem_error) and CancellationError.
class ContainerBrowser {
public:
    struct Options {
        ArchiveReaderFactory readers;
        SteadyClock now = steadyNow;
        WallClock wall = wallNow;
    };

    /// `cache` is the application's cache folder.
    ContainerBrowser(const FileUrl& cache, Options options);

    /// Removes what earlier runs left in the cache and is old, once; goes on with it when it was cancelled before. With
    /// many leftovers it takes seconds, so nothing that somebody waits for should stand behind it.
    void sweep(const CancellationTest& cancelled) noexcept;

    /// Whether the URL is a folder or is named like an archive.
    static bool isContainer(const FileUrl& url);

    /// Opens a session and lists its root.
    JsonObject browse(const FileUrl& url, const std::optional<std::string>& parentToken,
                      const std::optional<std::string>& displayPath, const CancellationTest& cancelled);
    /// Opens an entry of the listing: enters a folder or a nested archive, or hands out a document.
    ContainerOpenResult open(const std::string& token, const std::string& id, const CancellationTest& cancelled);
    JsonObject up(const std::string& token, const CancellationTest& cancelled);
    JsonObject refresh(const std::string& token, const CancellationTest& cancelled);
    /// Closes the session and all that were opened from it, and removes what was extracted for them.
    void close(const std::string& token) noexcept;

private:
    using SessionRef = std::shared_ptr<Session>;

    JsonObject browse(const FileUrl& url, const std::optional<std::string>& parentToken,
                      const std::optional<std::string>& displayPath, const CancellationTest& cancelled,
                      const std::optional<FileIdentity>& expected);
    JsonObject listing(Session& session, const std::string& path, const CancellationTest& cancelled) const;
    OpenedFile documentAt(Session& session, const Node& node, const CancellationTest& cancelled);
    ConfinedPlace extractedPlace(Session& session, const Node& node, const CancellationTest& cancelled);
    ArchiveWork work(const CancellationTest& cancelled) const {
        return {.readers = options_.readers, .cancelled = cancelled, .clock = options_.now};
    }
    SessionRef session(const std::string& token) const;
    std::vector<std::string> ancestorsFrom(const std::optional<std::string>& parentToken) const;
    void evict(const std::vector<std::string>& keep);

    std::recursive_mutex lock_;
    PreviewCache cache_;
    Options options_;
    NaturalOrder order_;
    std::unordered_map<std::string, SessionRef> sessions_;
    std::vector<std::string> opened_; ///< tokens in the order of their registration
    bool isSwept_ = false;
};

} // namespace quillmere
