#pragma once

#include "containers/ContainerBrowser.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::testing {

/// A member of a tar written byte by byte; `type` is the tar type flag.
struct TarMember {
    std::string name{};
    std::string data{};
    char type = '0';
    std::optional<uint64_t> declared{}; ///< in place of the data's size
    std::string link{};
};
std::string tarOf(const std::vector<TarMember>& members);

/// A member of a zip written byte by byte, stored unless `method` says otherwise.
struct ZipMember {
    std::string name{};
    std::string data{};
    std::optional<uint32_t> declared{}; ///< expanded size, in place of the data's size
    uint16_t method = 0;
    uint16_t flags = 0;
    std::optional<uint32_t> offset{}; ///< of another member's header, to overlap it
};
std::string zipOf(const std::vector<ZipMember>& members);

/// Written by libarchive with these format and filter names ("7zip", "gzip", ...).
std::string archiveOf(const char* format, const char* filter, const std::vector<TarMember>& members);

/// An LHA archive with one stored file, whose name is in the given code page.
std::string lhaOf(std::string_view name, std::string_view data, uint32_t codePage);

/// A xar whose table of contents is this XML.
std::string xarOf(std::string_view xml);

/// An ISO image whose one directory record continues in an area that continues in itself.
std::string isoWithLoop();

/// The sentence that the operation fails with; empty when it succeeds. Cancellation is "cancelled".
std::string failureOf(const std::function<void()>& operation);

const json::object* entryNamed(const JsonObject& listing, std::string_view name);
std::vector<std::string> namesOf(const JsonObject& listing);
std::string text(const JsonObject& record, std::string_view key);

/// A folder of its own with a browser that keeps its cache in it.
class ContainerFixture : public ::testing::Test {
protected:
    ContainerFixture();
    ~ContainerFixture() override;

    FileUrl path(std::string_view name) const { return folder_.appending(name); }
    FileUrl write(std::string_view name, std::string_view bytes) const;
    FileUrl makeFolder(std::string_view name) const;
    static std::string contentsOf(const FileUrl& file);

    void useReaders(ArchiveReaderFactory readers);
    static ArchiveReaderFactory confinedReaders();

    JsonObject browse(const FileUrl& url, std::optional<std::string> parent = {}) {
        return browser_->browse(url, parent, std::nullopt, never_);
    }
    ContainerOpenResult open(const JsonObject& listing, std::string_view name);
    JsonObject enter(const JsonObject& listing, std::string_view name) {
        return std::get<JsonObject>(open(listing, name));
    }
    OpenedFile document(const JsonObject& listing, std::string_view name) {
        return std::get<OpenedFile>(open(listing, name));
    }
    FileUrl sessionCache(const JsonObject& listing) const {
        return path("cache/ContainerPreviews").appending(text(listing, "token"));
    }

    const CancellationTest never_ = [] { return false; };
    FileUrl folder_;
    SteadyClock clock_ = steadyNow;
    std::unique_ptr<ContainerBrowser> browser_;
};

} // namespace quillmere::testing
