#include "prepare/MediaConverter.h"

#include "base/Errors.h"
#include "base/RegularFile.h"
#include "base/Text.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <semaphore>
#include <string_view>
#include <system_error>

namespace quillmere {

namespace {

constexpr auto exportPollInterval = std::chrono::milliseconds(50);
/// As far as ffmpeg looks to find out what a file is.
constexpr size_t probedBytes = 1 << 20;
constexpr size_t textProbe = 4096;

/// Whether the file begins as text does: no media format, but a playlist does.
bool looksLikeText(std::string_view head) {
    return std::ranges::none_of(head.substr(0, textProbe),
                                [](char c) { return c >= 0 && c < ' ' && c != '\n' && c != '\r' && c != '\t'; });
}

/// Whether ffmpeg may take the file for a list of other files, or of addresses, and open these. It finds most of the
/// marks at the start only, but passes over tags that stand before them.
bool looksLikePlaylist(std::string_view head) {
    const std::string lower = asciiLower(head);
    const auto holds = [&](std::string_view mark) { return lower.find(mark) != std::string::npos; };
    return holds("ffconcat version") || holds("#extm3u") || (holds("<mpd") && holds("dash:profile")) ||
           holds("<compositionplaylist") || holds("c=in ip") || holds("# vobsub index");
}

} // namespace

std::string headOf(const FileUrl& file, size_t count) {
    try {
        const RegularFile opened(file);
        std::string head(count, '\0');
        size_t received = 0;
        while (received < count) {
            auto* rest = reinterpret_cast<std::byte*>(head.data()) + received;
            const size_t more = opened.read(received, rest, count - received);
            if (more == 0)
                break;
            received += more;
        }
        head.resize(received);
        return head;
    } catch (const std::filesystem::filesystem_error&) {
        return {};
    }
}

std::optional<FileUrl> MediaConverter::convert(const FileUrl& original, const WorkFolder& work) const {
    FileUrl output = work->url().appending(std::string("media.") + extensionOf(format()));
    if (exports(original, output))
        return output;
    std::error_code ignored;
    std::filesystem::remove(output.filesystemPath(), ignored);
    return runFfmpeg(original, output, work);
}

/// Whether the platform's own exporter made the output. The wait is cut into short pieces, since the clock is a given
/// one.
bool MediaConverter::exports(const FileUrl& original, const FileUrl& output) const {
    const bool isAudio = media_ == MediaKind::audio;
    const auto session = exporter_.makeSession(original, isAudio ? platform::ExportPreset::audioM4a
                                                                 : platform::ExportPreset::video1280x720);
    if (!session)
        return false;
    // Shared with the completion, which may come after we have given up.
    const auto finished = std::make_shared<std::counting_semaphore<>>(0);
    const SteadyTime deadline = runner_.now() + ProgramRunner::timeLimit;
    session->exportAsynchronously({.output = output,
                                   .type = isAudio ? platform::ExportFileType::m4a : platform::ExportFileType::mpeg4,
                                   .optimizeForNetworkUse = true},
                                  [finished] { finished->release(); });
    while (!finished->try_acquire_for(exportPollInterval)) {
        if (runner_.now() < deadline)
            continue;
        session->cancelExport();
        break;
    }
    if (session->status() != platform::ExportStatus::completed)
        return false;
    try {
        return isWhole(RegularFile(output), format());
    } catch (const std::filesystem::filesystem_error&) {
        return false;
    }
}

std::optional<FileUrl> MediaConverter::runFfmpeg(const FileUrl& original, const FileUrl& output,
                                                 const WorkFolder& work) const {
    if (programs_.empty())
        return std::nullopt;
    const std::string head = headOf(original, probedBytes);
    if (looksLikePlaylist(head) || (looksLikeText(head) && !runner_.hasWall()))
        throw FileFailure(converterFailure);
    std::vector<std::string> arguments{"-v", "error", "-y", "-i", original.path()};
    if (media_ == MediaKind::audio)
        arguments.insert(arguments.end(), {"-vn", "-c:a", "aac"});
    else
        arguments.insert(arguments.end(), {"-c:v", "libx264", "-preset", "veryfast", "-crf", "23", "-pix_fmt",
                                           "yuv420p", "-c:a", "aac", "-movflags", "+faststart"});
    arguments.push_back(output.path());
    runner_.run({.programs = programs_, .arguments = std::move(arguments), .original = original, .work = work});
    return output;
}

} // namespace quillmere
