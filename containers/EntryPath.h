#pragma once

#include "base/FileUrl.h"
#include "containers/ArchiveReader.h"

#include <string>
#include <string_view>

namespace quillmere {

/// The path of an archive entry, made relative and clean: components joined by "/", none of them "." or "..". Empty for
/// a name such as "./". Throws ContainerError for a name that could reach outside or that no file could carry.
std::string safeArchivePath(std::string_view name);

/// The same from an entry as read; the single entry of a compressed file is named after the archive.
std::string entryPath(const EntryFacts& facts, const FileUrl& archive);

/// Whether the entry stands for the content of a compressed file that is not an archive.
bool isRawFormat(const EntryFacts& facts);

/// The path without its last component; empty at the top.
std::string_view parentOfPath(std::string_view path);
std::string_view lastOfPath(std::string_view path);

} // namespace quillmere
