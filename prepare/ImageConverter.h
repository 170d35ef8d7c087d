#pragma once

#include "platform/ImageCodec.h"
#include "prepare/Converter.h"

namespace quillmere {

/// Images into PNG, upright, scaled down when they are very large.
class ImageConverter final : public Converter {
public:
    explicit ImageConverter(platform::ImageCodec& codec) : codec_(codec) {}

    ConverterKind kind() const override { return ConverterKind::image; }
    ResultFormat format() const override { return ResultFormat::png; }
    std::optional<FileUrl> convert(const FileUrl& original, const WorkFolder& work) const override;
    const char* failure() const override { return imageFailure; }

private:
    platform::ImageCodec& codec_;
};

} // namespace quillmere
