#include "prepare/FilePreparation.h"

#include "base/Errors.h"
#include "prepare/FileKinds.h"
#include "prepare/ImageConverter.h"
#include "prepare/OfficeConverter.h"

#include <exception>
#include <filesystem>
#include <utility>

namespace quillmere {

namespace {

constexpr size_t headSize = 4096;
constexpr char syncByte = 'G';

constexpr const char* codecFailure =
    "This media codec is unavailable on this Mac. Optional FFmpeg support can open additional legacy codecs.";

std::optional<FileUrl> first(const std::vector<FileUrl>& files) {
    return files.empty() ? std::nullopt : std::optional(files.front());
}

} // namespace

FilePreparation::FilePreparation(Tools tools) : tools_(std::move(tools)), runner_(tools_.confinement, tools_.clock) {}

std::vector<FileUrl> FilePreparation::standardLibreOfficeCandidates() {
    return {FileUrl("/Applications/LibreOffice.app/Contents/MacOS/soffice"),
            FileUrl("/opt/homebrew/bin/soffice"),
            FileUrl("/usr/local/bin/soffice"),
            FileUrl("/usr/bin/soffice"),
            FileUrl("/usr/lib/libreoffice/program/soffice"),
            FileUrl("/opt/libreoffice*/program/soffice")};
}

std::vector<FileUrl> FilePreparation::standardFfmpegCandidates() {
    return {FileUrl("/opt/homebrew/bin/ffmpeg"), FileUrl("/usr/local/bin/ffmpeg"), FileUrl("/usr/bin/ffmpeg")};
}

std::optional<FileUrl> FilePreparation::libreOffice() const {
    return first(executables(tools_.libreOfficeCandidates));
}

std::optional<FileUrl> FilePreparation::ffmpeg() const {
    return first(executables(tools_.ffmpegCandidates));
}

bool FilePreparation::isTransportStream(const FileUrl& url) {
    const std::string head = headOf(url, headSize);
    for (const size_t packet : {188U, 192U})
        for (size_t i = 0; i < packet && i + 2 * packet < head.size(); ++i)
            if (head[i] == syncByte && head[i + packet] == syncByte && head[i + 2 * packet] == syncByte)
                return true;
    return false;
}

PreparedFile FilePreparation::prepare(const FileUrl& url, const FileUrl& cache,
                                      const std::stop_token& superseded) const {
    const std::string ext = url.lowerExtension();
    if (ext == "ts" && !isTransportStream(url))
        return {.file = url, .ext = ext, .kind = "text"};
    const FileKind kind = fileKind(ext);
    switch (kind) {
    case FileKind::image:
        if (const auto image = imageOf(url, cache, superseded))
            return {.file = *image, .ext = "png"};
        break;
    case FileKind::officeWords:
    case FileKind::officeSlides:
        if (const auto document = documentOf(url, cache, superseded))
            return {.file = *document, .ext = "pdf", .kind = kind == FileKind::officeSlides ? "slides" : "pages"};
        break;
    case FileKind::legacyVideo:
    case FileKind::legacyAudio:
        try {
            const auto media = kind == FileKind::legacyAudio ? MediaKind::audio : MediaKind::video;
            return transcode(url, cache, media, superseded);
        } catch (const CancellationError&) {
            throw;
        } catch (const std::exception&) {
            // The page gets the original. If it cannot play it, it asks again and hears why.
        }
        break;
    case FileKind::other:
        break;
    }
    return {.file = url, .ext = ext};
}

std::optional<FileUrl> FilePreparation::imageOf(const FileUrl& url, const FileUrl& cache,
                                                const std::stop_token& superseded) const {
    try {
        return results_.result(url, cache, ImageConverter(tools_.images), superseded);
    } catch (const UnusableCache&) {
        return std::nullopt; // without a place for the picture there is the original
    } catch (const std::filesystem::filesystem_error&) {
        throw FileFailure(imageFailure);
    }
}

std::optional<FileUrl> FilePreparation::documentOf(const FileUrl& url, const FileUrl& cache,
                                                   const std::stop_token& superseded) const {
    auto programs = executables(tools_.libreOfficeCandidates);
    if (programs.empty())
        return std::nullopt;
    return results_.result(url, cache, OfficeConverter(runner_, std::move(programs)), superseded);
}

PreparedFile FilePreparation::transcode(const FileUrl& url, const FileUrl& cache, MediaKind kind,
                                        const std::stop_token& superseded) const {
    const MediaConverter converter(runner_, tools_.exporter, executables(tools_.ffmpegCandidates), kind);
    const auto media = results_.result(url, cache, converter, superseded);
    if (!media)
        throw FileFailure(codecFailure);
    return {.file = *media, .ext = extensionOf(converter.format())};
}

} // namespace quillmere
