#pragma once

#include "base/Clock.h"
#include "base/FileUrl.h"
#include "platform/ImageCodec.h"
#include "platform/MediaExporter.h"
#include "platform/common/Confinement.h"
#include "prepare/ConversionCache.h"
#include "prepare/MediaConverter.h"
#include "prepare/ProgramRun.h"

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace quillmere {

/// What the page shows in place of a file.
struct PreparedFile {
    FileUrl file;
    std::string ext;                   // lower case; by it the page picks its viewer
    std::optional<std::string> kind{}; // "text", "pages" or "slides"
    bool operator==(const PreparedFile&) const = default;
};

/// Decides for each file whether the page can show it as it is, and has it converted if not. Operations block for
/// minutes: any thread but the main one. Failures are FileFailure, or the file system's own. A request that is
/// superseded while it waits for its converter ends with CancellationError; one whose converter runs goes on.
class FilePreparation {
public:
    struct Tools {
        platform::ImageCodec& images;
        platform::MediaExporter& exporter;
        const platform::Confinement& confinement;
        std::vector<FileUrl> libreOfficeCandidates = standardLibreOfficeCandidates();
        std::vector<FileUrl> ffmpegCandidates = standardFfmpegCandidates();
        SteadyClock clock = steadyNow; // measures the time limits
    };

    /// What the tools refer to outlives the object.
    explicit FilePreparation(Tools tools);

    PreparedFile prepare(const FileUrl& url, const FileUrl& cache, const std::stop_token& superseded = {}) const;
    PreparedFile transcode(const FileUrl& url, const FileUrl& cache, MediaKind kind,
                           const std::stop_token& superseded = {}) const;

    /// The first candidate that is an executable file; looked for anew each time.
    std::optional<FileUrl> libreOffice() const;
    std::optional<FileUrl> ffmpeg() const;

    static std::string key(const FileUrl& url) { return ConversionCache::key(url); }
    /// Whether the head of the file holds three sync bytes one packet apart.
    static bool isTransportStream(const FileUrl& url);

    static std::vector<FileUrl> standardLibreOfficeCandidates();
    static std::vector<FileUrl> standardFfmpegCandidates();

private:
    std::optional<FileUrl> imageOf(const FileUrl& url, const FileUrl& cache, const std::stop_token& superseded) const;
    std::optional<FileUrl> documentOf(const FileUrl& url, const FileUrl& cache,
                                      const std::stop_token& superseded) const;

    Tools tools_;
    ProgramRunner runner_;
    mutable ConversionCache results_;
};

} // namespace quillmere
