#pragma once

#include "prepare/ProgramRun.h"

namespace quillmere {

/// Office documents into PDF, by LibreOffice.
class OfficeConverter final : public Converter {
public:
    /// `runner` outlives the converter; `programs` are those of LibreOffice that can be tried, at least one.
    OfficeConverter(const ProgramRunner& runner, std::vector<FileUrl> programs)
        : runner_(runner), programs_(std::move(programs)) {}

    ConverterKind kind() const override { return ConverterKind::office; }
    ResultFormat format() const override { return ResultFormat::pdf; }
    std::optional<FileUrl> convert(const FileUrl& original, const WorkFolder& work) const override;

private:
    const ProgramRunner& runner_;
    std::vector<FileUrl> programs_;
};

} // namespace quillmere
