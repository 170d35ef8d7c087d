#include "prepare/ImageConverter.h"

#include "base/Errors.h"

namespace quillmere {

namespace {

constexpr int longestSide = 8192;

} // namespace

std::optional<FileUrl> ImageConverter::convert(const FileUrl& original, const WorkFolder& work) const {
    FileUrl produced = work->url().appending("image.png");
    switch (codec_.writeThumbnail(original, produced, longestSide)) {
    case platform::ImageOutcome::written:
        return produced;
    case platform::ImageOutcome::unreadable:
        return std::nullopt;
    case platform::ImageOutcome::writeFailed:
        break;
    }
    throw FileFailure(imageFailure);
}

} // namespace quillmere
