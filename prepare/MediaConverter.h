#pragma once

#include "platform/MediaExporter.h"
#include "prepare/ProgramRun.h"

namespace quillmere {

enum class MediaKind { video, audio };

/// Film and sound into MPEG-4, by the platform's exporter or else by ffmpeg.
class MediaConverter final : public Converter {
public:
    /// `runner` and `exporter` outlive the converter; `programs` are those of ffmpeg that can be tried, maybe none.
    MediaConverter(const ProgramRunner& runner, platform::MediaExporter& exporter, std::vector<FileUrl> programs,
                   MediaKind media)
        : runner_(runner), exporter_(exporter), programs_(std::move(programs)), media_(media) {}

    ConverterKind kind() const override { return ConverterKind::media; }
    ResultFormat format() const override { return media_ == MediaKind::audio ? ResultFormat::m4a : ResultFormat::mp4; }
    std::optional<FileUrl> convert(const FileUrl& original, const WorkFolder& work) const override;

private:
    bool exports(const FileUrl& original, const FileUrl& output) const;
    std::optional<FileUrl> runFfmpeg(const FileUrl& original, const FileUrl& output, const WorkFolder& work) const;

    const ProgramRunner& runner_;
    platform::MediaExporter& exporter_;
    std::vector<FileUrl> programs_;
    MediaKind media_;
};

/// The first bytes of a file, at most `count`; empty when it cannot be read or is no regular file.
std::string headOf(const FileUrl& file, size_t count);

} // namespace quillmere
