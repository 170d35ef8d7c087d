#pragma once

#include "base/FileUrl.h"
#include "platform/common/TemporaryFolder.h"
#include "prepare/ConversionQueue.h"
#include "prepare/ResultFormat.h"

#include <memory>
#include <optional>

namespace quillmere {

using WorkFolder = std::shared_ptr<const platform::TemporaryFolder>;

inline constexpr const char* imageFailure = "The image could not be decoded by macOS.";
inline constexpr const char* converterFailure = "The file converter could not open this document.";

/// One way to make a file that the page can show. Blocks for minutes; any thread but the main one.
class Converter {
public:
    virtual ~Converter() = default;
    virtual ConverterKind kind() const = 0;
    virtual ResultFormat format() const = 0;
    /// Makes a file inside the work folder and returns it; nothing when the original cannot be converted.
    virtual std::optional<FileUrl> convert(const FileUrl& original, const WorkFolder& work) const = 0;
    /// The sentence for a result that is no whole file of the format.
    virtual const char* failure() const { return converterFailure; }
};

} // namespace quillmere
