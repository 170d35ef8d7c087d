#include "platform/gtk/DesktopPlatform.h"

namespace quillmere::platform::gtk {

namespace {

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

} // namespace

DesktopPlatform::DesktopPlatform(std::vector<std::string> arguments, InstanceRole role)
    : defaultsWriter_(executors_.makeSerial("app.quillmere.defaults")),
      defaults_(defaultsFileOf(directories_), *defaultsWriter_),
      application_(std::move(arguments), role, aboutOf(bundle_)), dialogs_(directories_.home),
      toolkit_({.application = application_,
                .executors = executors_,
                .defaults = defaults_,
                .icons = resourcesOf(bundle_).appending("icons"),
                .extensions = bundle_.helper("web-process"),
                .sandbox = sandbox_}),
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
