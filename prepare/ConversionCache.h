#pragma once

#include "base/Errors.h"
#include "prepare/Converter.h"

#include <optional>
#include <stop_token>
#include <string>

namespace quillmere {

/// The folder of the cache cannot be made, or is not this user's alone, or there is no room in it.
class UnusableCache : public FileFailure {
public:
    UnusableCache(int errorNumber, const FileUrl& original);
};

/// Finished conversions, under a key of the original's path, size and modification time. A result is made in a work
/// folder, judged, flushed and renamed into its place. Any thread but the main one.
class ConversionCache {
public:
    /// The finished result in the folder, made first if it is not there. A file that changes meanwhile is converted
    /// once more, so that what lies under a key is what the file held then. Nothing when the converter makes nothing;
    /// throws what it throws, UnusableCache, the file system's error in the name of the original, and CancellationError
    /// when the request is superseded before its turn has come.
    std::optional<FileUrl> result(const FileUrl& original, const FileUrl& folder, const Converter& converter,
                                  const std::stop_token& superseded);

    /// 64 hexadecimal digits, from metadata only.
    static std::string key(const FileUrl& original);

private:
    ConversionQueue queue_;
};

} // namespace quillmere
