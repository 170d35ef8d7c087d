#include "platform/common/WorkerImageCodec.h"

#include "base/Errors.h"
#include "base/Sanitizers.h"
#include "platform/common/TemporaryFolder.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <utility>

namespace quillmere::platform {

namespace {

constexpr auto timeLimit = std::chrono::seconds(60);
constexpr int niceness = 5;

constexpr std::optional<std::uint64_t> addressSpace =
    isSanitized ? std::nullopt : std::optional<std::uint64_t>(4ULL << 30);

constexpr ResourceLimits limits{
    .addressSpace = addressSpace, .cpuSeconds = 60, .fileSize = 1ULL << 30, .openFiles = 64, .processes = 256};

} // namespace

WorkerImageCodec::WorkerImageCodec(FileUrl worker, const Confinement& confinement)
    : worker_(std::move(worker)), confinement_(confinement) {}

ImageOutcome WorkerImageCodec::writeThumbnail(const FileUrl& source, const FileUrl& output, int maxSide) {
    try {
        const auto work = TemporaryFolder::makeInside(output.parent());
        const FileUrl produced = work->url().appending("image.png");
        const ImageOutcome outcome = runWorker(source, produced, maxSide);
        if (outcome != ImageOutcome::written)
            return outcome;
        // A link left by a worker that was taken over would lead to any file of the user.
        if (std::filesystem::symlink_status(produced.filesystemPath()).type() != std::filesystem::file_type::regular)
            return ImageOutcome::unreadable;
        return std::rename(produced.path().c_str(), output.path().c_str()) == 0 ? outcome : ImageOutcome::writeFailed;
    } catch (const std::exception&) {
        return ImageOutcome::writeFailed; // no folder to write to, or no program to write
    }
}

ImageOutcome WorkerImageCodec::runWorker(const FileUrl& source, const FileUrl& produced, int maxSide) const {
    const ProcessSpec program{.executable = worker_,
                              .arguments = {source.path(), produced.path(), std::to_string(maxSide)},
                              .limits = limits,
                              .niceness = niceness};
    ChildProcess child(confinement_.confine(program, {.readable = {source}, .writable = produced.parent()}));
    if (!child.waitUntil(steadyNow() + timeLimit))
        return ImageOutcome::unreadable;
    const ExitStatus status = child.wait();
    if (status.signal != 0)
        return ImageOutcome::unreadable;
    switch (static_cast<ImageWorkerExit>(status.code)) {
    case ImageWorkerExit::written:
        return ImageOutcome::written;
    case ImageWorkerExit::writeFailed:
        return ImageOutcome::writeFailed;
    case ImageWorkerExit::unreadable:
        break;
    }
    return ImageOutcome::unreadable;
}

} // namespace quillmere::platform
