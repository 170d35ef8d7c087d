#pragma once

#include "base/Clock.h"
#include "base/FileUrl.h"
#include "platform/ImageCodec.h"
#include "platform/MediaExporter.h"
#include "platform/common/Confinement.h"
#include "platform/common/TemporaryFolder.h"
#include "prepare/SingleFlight.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
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

enum class MediaKind { video, audio };

/// Decides for each file whether the page can show it as it is, and converts it if not. Results stay in the cache
/// folder under a key of the file's path, size and modification time; a result is renamed into its place when it is
/// finished, and conversions of the same file at the same time do the work once. Operations block for minutes: any
/// thread but the main one. Failures are FileFailure, or the file system's own.
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

    /// The limit of each external run and of the platform's export.
    static constexpr std::chrono::seconds timeLimit{180};

    /// What the tools refer to outlives the object.
    explicit FilePreparation(Tools tools);

    PreparedFile prepare(const FileUrl& url, const FileUrl& cache) const;
    PreparedFile transcode(const FileUrl& url, const FileUrl& cache, MediaKind kind) const;

    /// The first candidate that is an executable file; looked for anew each time.
    std::optional<FileUrl> libreOffice() const;
    std::optional<FileUrl> ffmpeg() const;

    /// The cache key: 64 hexadecimal digits, from metadata only.
    static std::string key(const FileUrl& url);
    /// Whether the head of the file holds three sync bytes one packet apart.
    static bool isTransportStream(const FileUrl& url);

    static std::vector<FileUrl> standardLibreOfficeCandidates();
    static std::vector<FileUrl> standardFfmpegCandidates();

private:
    using WorkFolder = std::shared_ptr<const platform::TemporaryFolder>;
    /// Makes a file inside the work folder and returns it; nothing when the original cannot be converted.
    using Converter = std::function<std::optional<FileUrl>(const WorkFolder& work)>;

    std::optional<FileUrl> converted(const FileUrl& url, const FileUrl& cache, const std::string& ext,
                                     const Converter& converter) const;
    std::optional<FileUrl> convertImage(const FileUrl& url, const FileUrl& cache) const;
    std::optional<FileUrl> convertOffice(const FileUrl& url, const FileUrl& cache, const FileUrl& soffice) const;
    bool exportMedia(const FileUrl& url, const FileUrl& output, MediaKind kind) const;
    std::optional<FileUrl> runFfmpeg(const FileUrl& url, const FileUrl& output, MediaKind kind,
                                     const WorkFolder& work) const;
    /// Runs a converter behind its wall, with the original to read and the work folder to write.
    void runConfined(const FileUrl& executable, std::vector<std::string> arguments, const FileUrl& url,
                     const WorkFolder& work) const;

    Tools tools_;
    mutable SingleFlight flights_;
};

} // namespace quillmere
