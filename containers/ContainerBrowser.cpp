#include "containers/ContainerBrowser.h"

#include "base/Errors.h"
#include "base/Uuid.h"
#include "containers/ArchiveScan.h"
#include "containers/ContainerLimits.h"
#include "containers/ContainerMessages.h"
#include "containers/EntryExtraction.h"
#include "containers/EntryPath.h"
#include "containers/FolderListing.h"
#include "containers/Listing.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace quillmere {

namespace {

constexpr std::array<std::string_view, 29> archiveExtensions{
    "zip", "7z",  "rar", "tar", "gz",  "gzip", "bz2", "bzip2", "xz",  "tgz", "tbz", "tbz2", "txz",   "cab", "cpio",
    "iso", "cbz", "cbr", "cb7", "cbt", "jar",  "war", "ear",   "apk", "ipa", "xpi", "vsix", "nupkg", "whl"};

bool isNamedLikeArchive(const FileUrl& url) {
    return std::ranges::find(archiveExtensions, url.lowerExtension()) != archiveExtensions.end();
}

std::vector<const Node*> nodesIn(Session& session, const std::string& path) {
    std::vector<const Node*> nodes;
    for (auto& [nodePath, node] : session.nodes)
        if (parentOfPath(nodePath) == path) {
            Session::identify(node, session.byID);
            nodes.push_back(&node);
        }
    // Names that sort alike come in one order, whatever the map's.
    std::ranges::sort(nodes, {}, &Node::path);
    return nodes;
}

/// The archive that was checked, open for reading.
ArchiveSource openChecked(const FileUrl& url, const FileIdentity& checked) {
    FileDescriptor file = openArchive(url);
    const auto status = fileFacts::statusOf(file, url);
    if (fileFacts::identity(status) != checked)
        throw ContainerError(messages::archiveChanged);
    return {.file = std::move(file), .size = status.st_size};
}

} // namespace

ContainerBrowser::ContainerBrowser(const FileUrl& cache, Options options)
    : cache_(cache.appending("ContainerPreviews")), options_(std::move(options)) {}

void ContainerBrowser::sweep(const CancellationTest& cancelled) noexcept {
    const std::lock_guard hold(lock_);
    if (!isSwept_)
        isSwept_ = cache_.sweep(options_.wall(), cancelled);
}

bool ContainerBrowser::isContainer(const FileUrl& url) {
    struct stat status{};
    const bool isFolder = ::stat(url.path().c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    return isFolder || isNamedLikeArchive(url);
}

JsonObject ContainerBrowser::browse(const FileUrl& url, const std::optional<std::string>& parentToken,
                                    const std::optional<std::string>& displayPath, const CancellationTest& cancelled) {
    return browse(url, parentToken, displayPath, cancelled, std::nullopt);
}

JsonObject ContainerBrowser::browse(const FileUrl& url, const std::optional<std::string>& parentToken,
                                    const std::optional<std::string>& displayPath, const CancellationTest& cancelled,
                                    const std::optional<FileIdentity>& expected) {
    const std::lock_guard hold(lock_);
    WorkWatch(cancelled).check();
    const FileUrl source = url.standardized().resolvingSymlinks();
    const FileDescriptor place = fileFacts::openWithoutLinks(source, fileFacts::Handle::place);
    const auto status = fileFacts::statusOf(place, source);
    const bool isFolder = S_ISDIR(status.st_mode);
    if (expected && fileFacts::identity(status) != *expected)
        throw ContainerError(messages::itemReplaced);
    if (!isFolder && !(S_ISREG(status.st_mode) && isNamedLikeArchive(source)))
        throw ContainerError(messages::notAContainer);
    auto protectedTokens = ancestorsFrom(parentToken);
    if (protectedTokens.size() > limits::ancestors)
        throw ContainerError(messages::nestedTooDeep);

    const auto session = std::make_shared<Session>(Session{.token = newUuid(),
                                                           .source = source,
                                                           .archive = !isFolder,
                                                           .fingerprint = fileFacts::fingerprint(status),
                                                           .parentToken = parentToken,
                                                           .displayPath = displayPath.value_or(source.path())});
    if (session->archive)
        scanArchive(*session, openChecked(source, fileFacts::identity(status)), work(cancelled));
    JsonObject record = listing(*session, {}, cancelled);
    sessions_[session->token] = session;
    opened_.push_back(session->token);
    protectedTokens.push_back(session->token);
    evict(protectedTokens);
    return record;
}

JsonObject ContainerBrowser::listing(Session& session, const std::string& path,
                                     const CancellationTest& cancelled) const {
    const WorkWatch watch(cancelled);
    watch.check();
    if (session.archive)
        requireUnchanged(session);
    auto nodes = session.archive ? nodesIn(session, path) : listFolder(session, path, watch);
    order_.sort(nodes);
    watch.check();
    session.current = path;
    return listingRecord(session, path, nodes);
}

ContainerOpenResult ContainerBrowser::open(const std::string& token, const std::string& id,
                                           const CancellationTest& cancelled) {
    const std::lock_guard hold(lock_);
    const auto current = session(token);
    const auto found = current->byID.find(id);
    if (found == current->byID.end())
        throw ContainerError(messages::itemGone);
    const Node node = *found->second;
    if (node.blocked)
        throw ContainerError(node.blocked);
    if (node.directory)
        return listing(*current, std::string(node.path), cancelled);
    WorkWatch(cancelled).check();
    OpenedFile document = documentAt(*current, node, cancelled);
    if (!isNamedLikeArchive(document.file))
        return document;
    return browse(document.file, token, current->displayPath + " / " + std::string(node.path), cancelled,
                  document.identity);
}

OpenedFile ContainerBrowser::documentAt(Session& session, const Node& node, const CancellationTest& cancelled) {
    ConfinedPlace place = session.archive
                              ? extractedPlace(session, node, cancelled)
                              : confinedPlace(session.source, std::string(node.path), fileFacts::Handle::place);
    const auto status = fileFacts::statusOf(place.handle, place.url);
    if (!S_ISREG(status.st_mode))
        throw ContainerError(messages::itemReplaced);
    return {.file = std::move(place.url), .name = node.name(), .identity = fileFacts::identity(status)};
}

ConfinedPlace ContainerBrowser::extractedPlace(Session& session, const Node& node, const CancellationTest& cancelled) {
    FileUrl file = extractEntry(session, node, cache_, work(cancelled));
    try {
        FileDescriptor handle = cache_.entryPlace(file);
        return {std::move(file), std::move(handle)};
    } catch (const std::filesystem::filesystem_error& error) {
        if (error.code() == std::errc::too_many_symbolic_link_levels)
            throw ContainerError(messages::itemReplaced);
        throw;
    }
}

JsonObject ContainerBrowser::up(const std::string& token, const CancellationTest& cancelled) {
    const std::lock_guard hold(lock_);
    const auto current = session(token);
    if (!current->current.empty() || !current->parentToken)
        return listing(*current, std::string(parentOfPath(current->current)), cancelled);
    const auto parent = session(*current->parentToken);
    JsonObject record = listing(*parent, parent->current, cancelled);
    close(token);
    return record;
}

JsonObject ContainerBrowser::refresh(const std::string& token, const CancellationTest& cancelled) {
    const std::lock_guard hold(lock_);
    const auto current = session(token);
    return listing(*current, current->current, cancelled);
}

void ContainerBrowser::close(const std::string& token) noexcept {
    const std::lock_guard hold(lock_);
    // The caller's text may be part of what goes.
    const std::string closing = token; // NOLINT(performance-unnecessary-copy-initialization)
    std::vector<std::string> nested;
    for (const auto& [other, session] : sessions_)
        if (session->parentToken == closing)
            nested.push_back(other);
    for (const auto& other : nested)
        close(other);
    sessions_.erase(closing);
    std::erase(opened_, closing);
    cache_.removeSession(closing);
}

ContainerBrowser::SessionRef ContainerBrowser::session(const std::string& token) const {
    const auto found = sessions_.find(token);
    if (found == sessions_.end())
        throw ContainerError(messages::sessionExpired);
    return found->second;
}

std::vector<std::string> ContainerBrowser::ancestorsFrom(const std::optional<std::string>& parentToken) const {
    std::vector<std::string> ancestors;
    for (auto token = parentToken; token;) {
        const auto found = sessions_.find(*token);
        if (found == sessions_.end())
            break;
        ancestors.push_back(*token);
        token = found->second->parentToken;
    }
    return ancestors;
}

void ContainerBrowser::evict(const std::vector<std::string>& keep) {
    while (opened_.size() > limits::sessions) {
        const auto oldest = std::ranges::find_if(
            opened_, [&](const std::string& token) { return std::ranges::find(keep, token) == keep.end(); });
        if (oldest == opened_.end())
            return;
        close(*oldest);
    }
}

} // namespace quillmere
