#include "prepare/FilePreparation.h"

#include "base/Errors.h"
#include "base/FileDescriptor.h"
#include "base/Sha256.h"
#include "base/Text.h"
#include "prepare/FileKinds.h"
#include "prepare/ProgramRun.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <semaphore>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace quillmere {

namespace fs = std::filesystem;

namespace {

constexpr int longestImageSide = 8192;
constexpr size_t headSize = 4096;
constexpr char syncByte = 'G';
/// Converters give way to the window.
constexpr int niceness = 5;

constexpr auto exportPollInterval = std::chrono::milliseconds(50);

/// Room for the largest honest file. The time is of all threads together: a converter on many cores may use a lot of it
/// within its three minutes.
constexpr platform::ResourceLimits converterLimits{
    .addressSpace = 8ULL << 30, .cpuSeconds = 3600, .fileSize = 16ULL << 30, .openFiles = 1024, .processes = 512};

constexpr const char* imageFailure = "The image could not be decoded by macOS.";
constexpr const char* codecFailure =
    "This media codec is unavailable on this Mac. Optional FFmpeg support can open additional legacy codecs.";

bool isExecutableFile(const FileUrl& candidate) {
    struct stat info{};
    return ::stat(candidate.path().c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
           ::access(candidate.path().c_str(), X_OK) == 0;
}

std::optional<FileUrl> firstExecutable(const std::vector<FileUrl>& candidates) {
    const auto found = std::ranges::find_if(candidates, isExecutableFile);
    return found == candidates.end() ? std::nullopt : std::optional(*found);
}

bool exists(const FileUrl& file) {
    std::error_code error;
    return fs::exists(file.filesystemPath(), error);
}

std::string nameWithoutExtension(const FileUrl& url) {
    std::string name = url.lastPathComponent();
    if (const auto ext = url.pathExtension(); !ext.empty())
        name.resize(name.size() - ext.size() - 1);
    return name;
}

/// The first bytes of the file; empty when it cannot be read.
std::string headOf(const FileUrl& url) {
    const FileDescriptor file(::open(url.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    std::string head(file ? headSize : 0, '\0');
    size_t count = 0;
    while (count < head.size()) {
        const ssize_t received = ::read(file.get(), head.data() + count, head.size() - count);
        if (received < 0 && errno == EINTR)
            continue;
        if (received <= 0)
            break;
        count += static_cast<size_t>(received);
    }
    head.resize(count);
    return head;
}

/// Whether the file begins as text does: no media format, but a playlist does.
bool looksLikeText(const FileUrl& url) {
    return std::ranges::none_of(headOf(url),
                                [](char c) { return c >= 0 && c < ' ' && c != '\n' && c != '\r' && c != '\t'; });
}

/// A converter behind its wall would only say that it failed.
void requireReadable(const FileUrl& url) {
    const FileDescriptor file(::open(url.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file)
        throwFileError(errno, url.path());
}

/// LibreOffice opens no path that is not valid UTF-8; such a file gets a link in the work folder.
FileUrl underReadableName(const FileUrl& url, const FileUrl& work) {
    if (isValidUtf8(url.path()))
        return url;
    const FileUrl link = work.appending("document." + url.pathExtension());
    if (::symlink(url.path().c_str(), link.path().c_str()) != 0)
        throwFileError(errno, link.path());
    return link;
}

} // namespace

FilePreparation::FilePreparation(Tools tools) : tools_(std::move(tools)) {}

std::vector<FileUrl> FilePreparation::standardLibreOfficeCandidates() {
    return {FileUrl("/Applications/LibreOffice.app/Contents/MacOS/soffice"), FileUrl("/opt/homebrew/bin/soffice"),
            FileUrl("/usr/local/bin/soffice"), FileUrl("/usr/bin/soffice"),
            FileUrl("/usr/lib/libreoffice/program/soffice")};
}

std::vector<FileUrl> FilePreparation::standardFfmpegCandidates() {
    return {FileUrl("/opt/homebrew/bin/ffmpeg"), FileUrl("/usr/local/bin/ffmpeg"), FileUrl("/usr/bin/ffmpeg")};
}

std::optional<FileUrl> FilePreparation::libreOffice() const {
    return firstExecutable(tools_.libreOfficeCandidates);
}

std::optional<FileUrl> FilePreparation::ffmpeg() const {
    return firstExecutable(tools_.ffmpegCandidates);
}

std::string FilePreparation::key(const FileUrl& url) {
    struct stat info{};
    double modified = 0;
    if (::stat(url.path().c_str(), &info) == 0)
        modified = static_cast<double>(info.st_mtim.tv_sec) + static_cast<double>(info.st_mtim.tv_nsec) / 1e9;
    else
        info = {};
    return sha256Hex(url.path() + "|" + std::to_string(info.st_size) + "|" + shortestDouble(modified));
}

bool FilePreparation::isTransportStream(const FileUrl& url) {
    const std::string head = headOf(url);
    for (const size_t packet : {188U, 192U})
        for (size_t i = 0; i < packet && i + 2 * packet < head.size(); ++i)
            if (head[i] == syncByte && head[i + packet] == syncByte && head[i + 2 * packet] == syncByte)
                return true;
    return false;
}

PreparedFile FilePreparation::prepare(const FileUrl& url, const FileUrl& cache) const {
    const std::string ext = url.lowerExtension();
    if (ext == "ts" && !isTransportStream(url))
        return {.file = url, .ext = ext, .kind = "text"};
    const FileKind kind = fileKind(ext);
    switch (kind) {
    case FileKind::image:
        if (const auto image = convertImage(url, cache))
            return {.file = *image, .ext = "png"};
        break;
    case FileKind::officeWords:
    case FileKind::officeSlides:
        if (const auto soffice = libreOffice())
            if (const auto document = convertOffice(url, cache, *soffice))
                return {.file = *document, .ext = "pdf", .kind = kind == FileKind::officeSlides ? "slides" : "pages"};
        break;
    case FileKind::legacyVideo:
    case FileKind::legacyAudio:
        try {
            return transcode(url, cache, kind == FileKind::legacyAudio ? MediaKind::audio : MediaKind::video);
        } catch (const std::exception&) {
            // The page gets the original. If it cannot play it, it asks again and hears why.
        }
        break;
    case FileKind::other:
        break;
    }
    return {.file = url, .ext = ext};
}

/// The finished result in the cache, made first if it is not there. A file that changes meanwhile is converted once
/// more, so that what lies under a key is what the file held then.
std::optional<FileUrl> FilePreparation::converted(const FileUrl& url, const FileUrl& cache, const std::string& ext,
                                                  const Converter& converter) const {
    for (int attempt = 0;; ++attempt) {
        const std::string fileKey = key(url);
        FileUrl out = cache.appending(std::string(fileKey).append(".").append(ext));
        if (exists(out))
            return out;
        bool hasChanged = false;
        flights_.run(out.path(), [&] {
            if (exists(out))
                return;
            const auto work = platform::TemporaryFolder::makeInside(cache);
            const auto produced = converter(work);
            hasChanged = key(url) != fileKey;
            if (!produced || (hasChanged && attempt == 0))
                return;
            if (std::rename(produced->path().c_str(), out.path().c_str()) != 0)
                throwFileError(errno, out.path());
        });
        if (exists(out))
            return out;
        if (!hasChanged || attempt > 0)
            return std::nullopt;
    }
}

std::optional<FileUrl> FilePreparation::convertImage(const FileUrl& url, const FileUrl& cache) const {
    const Converter converter = [&](const WorkFolder& work) -> std::optional<FileUrl> {
        FileUrl produced = work->url().appending("image.png");
        switch (tools_.images.writeThumbnail(url, produced, longestImageSide)) {
        case platform::ImageOutcome::written:
            return produced;
        case platform::ImageOutcome::unreadable:
            return std::nullopt;
        case platform::ImageOutcome::writeFailed:
            break;
        }
        throw FileFailure(imageFailure);
    };
    try {
        return converted(url, cache, "png", converter);
    } catch (const fs::filesystem_error&) {
        throw FileFailure(imageFailure); // a cache that cannot be written to
    }
}

std::optional<FileUrl> FilePreparation::convertOffice(const FileUrl& url, const FileUrl& cache,
                                                      const FileUrl& soffice) const {
    return converted(url, cache, "pdf", [&](const WorkFolder& work) -> std::optional<FileUrl> {
        const FileUrl document = underReadableName(url, work->url());
        runConfined(soffice,
                    {"-env:UserInstallation=" + work->url().appending("profile").uri(), "--headless", "--norestore",
                     "--convert-to", "pdf", "--outdir", work->url().path(), document.path()},
                    url, work);
        FileUrl produced = work->url().appending(nameWithoutExtension(document) + ".pdf");
        return exists(produced) ? std::optional(produced) : std::nullopt;
    });
}

PreparedFile FilePreparation::transcode(const FileUrl& url, const FileUrl& cache, MediaKind kind) const {
    const std::string ext = kind == MediaKind::audio ? "m4a" : "mp4";
    const auto media = converted(url, cache, ext, [&](const WorkFolder& work) -> std::optional<FileUrl> {
        FileUrl output = work->url().appending("media." + ext);
        if (exportMedia(url, output, kind))
            return output;
        std::error_code ignored;
        fs::remove(output.filesystemPath(), ignored);
        return runFfmpeg(url, output, kind, work);
    });
    if (!media)
        throw FileFailure(codecFailure);
    return {.file = *media, .ext = ext};
}

/// Whether the platform's own exporter made the output. The wait is cut into short pieces, since the clock is a given
/// one.
bool FilePreparation::exportMedia(const FileUrl& url, const FileUrl& output, MediaKind kind) const {
    const bool isAudio = kind == MediaKind::audio;
    const auto session = tools_.exporter.makeSession(url, isAudio ? platform::ExportPreset::audioM4a
                                                                  : platform::ExportPreset::video1280x720);
    if (!session)
        return false;
    // Shared with the completion, which may come after we have given up.
    const auto finished = std::make_shared<std::counting_semaphore<>>(0);
    const SteadyTime deadline = tools_.clock() + timeLimit;
    session->exportAsynchronously({.output = output,
                                   .type = isAudio ? platform::ExportFileType::m4a : platform::ExportFileType::mpeg4,
                                   .optimizeForNetworkUse = true},
                                  [finished] { finished->release(); });
    while (!finished->try_acquire_for(exportPollInterval)) {
        if (tools_.clock() < deadline)
            continue;
        session->cancelExport();
        break;
    }
    return session->status() == platform::ExportStatus::completed && exists(output);
}

std::optional<FileUrl> FilePreparation::runFfmpeg(const FileUrl& url, const FileUrl& output, MediaKind kind,
                                                  const WorkFolder& work) const {
    const auto program = ffmpeg();
    if (!program)
        return std::nullopt;
    // Without a wall ffmpeg would open whatever a playlist under a film's name lists.
    if (!tools_.confinement.hasWall() && looksLikeText(url))
        throw FileFailure(converterFailure);
    std::vector<std::string> arguments{"-v", "error", "-y", "-i", url.path()};
    if (kind == MediaKind::audio)
        arguments.insert(arguments.end(), {"-vn", "-c:a", "aac"});
    else
        arguments.insert(arguments.end(), {"-c:v", "libx264", "-preset", "veryfast", "-crf", "23", "-pix_fmt",
                                           "yuv420p", "-c:a", "aac", "-movflags", "+faststart"});
    arguments.push_back(output.path());
    runConfined(*program, std::move(arguments), url, work);
    return exists(output) ? std::optional(output) : std::nullopt;
}

void FilePreparation::runConfined(const FileUrl& executable, std::vector<std::string> arguments, const FileUrl& url,
                                  const WorkFolder& work) const {
    requireReadable(url);
    const platform::ProcessSpec program{
        .executable = executable, .arguments = std::move(arguments), .limits = converterLimits, .niceness = niceness};
    runProgram(tools_.confinement.confine(program, {.readable = {url}, .writable = work->url()}), timeLimit,
               tools_.clock, work);
}

} // namespace quillmere
