#pragma once

#include "platform/Application.h"
#include "platform/Dialogs.h"
#include "platform/Executors.h"
#include "platform/ImageCodec.h"
#include "platform/MediaExporter.h"
#include "platform/Services.h"
#include "platform/Toolkit.h"

namespace quillmere::platform {

/// Everything that the program needs from the system, handed to the delegate once. The references outlive it.
struct Platform {
    Application& application;
    Executors& executors;
    Toolkit& toolkit;
    Dialogs& dialogs;
    UserDefaults& defaults;
    Pasteboard& pasteboard;
    Workspace& workspace;
    ContentTypes& contentTypes;
    Bundle& bundle;
    ImageCodec& images;
    MediaExporter& mediaExporter;
    Directories directories;
};

} // namespace quillmere::platform
