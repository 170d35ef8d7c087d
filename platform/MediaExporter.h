#pragma once

#include "base/FileUrl.h"

#include <functional>
#include <memory>

namespace quillmere::platform {

enum class ExportPreset { audioM4a, video1280x720 };
enum class ExportFileType { m4a, mpeg4 };
enum class ExportStatus { unknown, exporting, completed, failed, cancelled };

struct ExportRequest {
    FileUrl output;
    ExportFileType type = ExportFileType::mpeg4;
    bool optimizeForNetworkUse = false;
};

/// One conversion by the platform's own media exporter. Any thread.
class MediaExportSession {
public:
    virtual ~MediaExportSession() = default;
    /// Starts the export; the completion runs on any thread, once.
    virtual void exportAsynchronously(const ExportRequest& request, std::function<void()> completion) = 0;
    virtual void cancelExport() = 0;
    virtual ExportStatus status() const = 0;
};

class MediaExporter {
public:
    virtual ~MediaExporter() = default;
    /// None when the platform cannot convert this file with this preset.
    virtual std::unique_ptr<MediaExportSession> makeSession(const FileUrl& asset, ExportPreset preset) = 0;
};

} // namespace quillmere::platform
