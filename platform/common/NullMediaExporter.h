#pragma once

#include "platform/MediaExporter.h"

namespace quillmere::platform {

/// For platforms without a media exporter of their own: it can convert nothing.
class NullMediaExporter final : public MediaExporter {
public:
    std::unique_ptr<MediaExportSession> makeSession(const FileUrl&, ExportPreset) override { return nullptr; }
};

} // namespace quillmere::platform
