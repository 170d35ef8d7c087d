#include "platform/gtk/DesktopPlatform.h"

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace quillmere::platform::gtk {

namespace {

bool hasGraphicsDevice() {
    std::error_code ignored;
    for (const auto& device : std::filesystem::directory_iterator("/dev/dri", ignored))
        if (device.path().filename().string().starts_with("renderD"))
            return true;
    return false;
}

/// Without a graphics device toolkit and engine would imitate one in software, which is many times slower than drawing
/// without any. Only the blur behind floating controls is lost.
void chooseRenderer() {
    if (hasGraphicsDevice())
        return;
    ::setenv("GSK_RENDERER", "cairo", 0);
    ::setenv("WEBKIT_DISABLE_COMPOSITING_MODE", "1", 0);
}

/// The graphics library keeps compiled shaders in this folder. The engine lets its confined processes have it only when
/// it is already there; otherwise the first picture of every run waits for a compiler.
void keepShaderCache() {
    std::error_code ignored;
    const auto folder = std::filesystem::path(g_get_user_cache_dir()) / "mesa_shader_cache";
    std::filesystem::create_directories(folder, ignored);
}

FileUrl resourcesOf(const Bundle& bundle) {
    return bundle.resources().value_or(bundle.url());
}

DesktopApplication::About aboutOf(const Bundle& bundle) {
    const auto list = bundle.propertyList();
    return {.name = "Quillmere",
            .version = list ? stringField(*list, "CFBundleShortVersionString").value_or("") : std::string()};
}

FileUrl defaultsFileOf(const Directories& directories) {
    return userDefaultsFile().value_or(directories.home.appending(".config/app.quillmere.viewer.plist"));
}

std::vector<std::string> prepared(std::vector<std::string> arguments) {
    chooseRenderer();
    keepShaderCache();
    return arguments;
}

} // namespace

DesktopPlatform::DesktopPlatform(std::vector<std::string> arguments, InstanceRole role)
    : defaultsWriter_(executors_.makeSerial("app.quillmere.defaults")),
      defaults_(defaultsFileOf(directories_), *defaultsWriter_),
      application_(prepared(std::move(arguments)), role, aboutOf(bundle_)), dialogs_(directories_.home),
      toolkit_({.application = application_,
                .executors = executors_,
                .defaults = defaults_,
                .icons = resourcesOf(bundle_).appending("icons"),
                .extensions = bundle_.helper("web-process")}),
      workspace_(directories_.applicationSupport, bundle_, contentTypes_),
      images_(bundle_.helper("quillmere-image-worker"), confinement_) {}

DesktopPlatform::~DesktopPlatform() = default;

Platform DesktopPlatform::seam() {
    return {.application = application_,
            .executors = executors_,
            .toolkit = toolkit_,
            .dialogs = dialogs_,
            .defaults = defaults_,
            .pasteboard = pasteboard_,
            .workspace = workspace_,
            .contentTypes = contentTypes_,
            .bundle = bundle_,
            .images = images_,
            .mediaExporter = mediaExporter_,
            .directories = directories_};
}

int DesktopPlatform::run(ApplicationClient& client) {
    const int status = application_.run(client);
    executors_.main().close();
    dialogs_.closeAll();
    defaults_.synchronize();
    return status;
}

} // namespace quillmere::platform::gtk
