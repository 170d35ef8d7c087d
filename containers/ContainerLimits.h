#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace quillmere::limits {

/// What an archive or folder may cost. Each value is still allowed; the next one is not.

inline constexpr int64_t archiveBytes = 1'073'741'824;
inline constexpr int64_t headers = 10'000;
inline constexpr size_t nodes = 10'000;
inline constexpr size_t folderEntries = 10'000;
inline constexpr int64_t expandedBytes = 2'147'483'648;
inline constexpr int64_t expansionFactor = 500;
inline constexpr int64_t expansionFloor = 1'048'576;
inline constexpr int64_t entryBytes = 268'435'456;
inline constexpr size_t pathBytes = 4'096;
inline constexpr size_t pathComponents = 64;
inline constexpr size_t entryNameBytes = 240;
inline constexpr size_t shortExtensionCharacters = 16;
inline constexpr int ancestors = 7;
inline constexpr size_t sessions = 8;
inline constexpr size_t blockBytes = 65'536;
inline constexpr std::chrono::seconds readingTime{30};

} // namespace quillmere::limits
