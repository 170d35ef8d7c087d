#pragma once

#include "platform/ImageCodec.h"
#include "platform/common/Confinement.h"

namespace quillmere::platform {

/// Decodes images in a confined program of ours, so that a hostile one costs at most that program, bounded memory and a
/// minute.
class WorkerImageCodec final : public ImageCodec {
public:
    /// `worker` is the program `quillmere-image-worker`; `confinement` outlives the codec.
    WorkerImageCodec(FileUrl worker, const Confinement& confinement);

    ImageOutcome writeThumbnail(const FileUrl& source, const FileUrl& output, int maxSide) override;

private:
    ImageOutcome runWorker(const FileUrl& source, const FileUrl& produced, int maxSide) const;

    FileUrl worker_;
    const Confinement& confinement_;
};

/// The exit statuses by which the worker program tells how it went; any other end counts as unreadable.
enum class ImageWorkerExit { written = 0, unreadable = 10, writeFailed = 11 };

} // namespace quillmere::platform
