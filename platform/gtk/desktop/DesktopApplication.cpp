#include "platform/gtk/desktop/DesktopApplication.h"

#include "base/CommandLine.h"
#include "platform/gtk/desktop/RecentFiles.h"
#include "platform/gtk/window/DesktopWindow.h"

#include <csignal>
#include <cstdlib>
#include <glib-unix.h>
#include <webkit/webkit.h>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* menuAction = "show-menu";

GObjectRef<GtkApplication> makeApplication(InstanceRole role) {
    const GApplicationFlags uniqueness =
        role == InstanceRole::primary ? G_APPLICATION_DEFAULT_FLAGS : G_APPLICATION_NON_UNIQUE;
    return GObjectRef<GtkApplication>::adopt(
        gtk_application_new(applicationId, static_cast<GApplicationFlags>(uniqueness | G_APPLICATION_HANDLES_OPEN)));
}

} // namespace

DesktopApplication::DesktopApplication(std::vector<std::string> arguments, InstanceRole role, About about)
    : arguments_(std::move(arguments)), about_(std::move(about)), application_(makeApplication(role)) {
    g_set_prgname(applicationId); // the name by which the desktop matches windows with the application
    g_set_application_name(about_.name.c_str());
    auto* application = application_.get();
    connections_.push_back(connect(application, "activate", [this](GApplication*) { launchOrReopen(); }));
    connections_.push_back(
        connect(application, "open", [this](GApplication* self, GFile** files, int count, const char* asker) {
            if (isStillWanted(g_application_get_dbus_connection(self), asker))
                openHandedOver(files, count);
        }));
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        systemSignals_.push_back(g_unix_signal_add(
            signal,
            +[](gpointer self) -> gboolean {
                static_cast<DesktopApplication*>(self)->terminate();
                return G_SOURCE_CONTINUE;
            },
            this));
}

DesktopApplication::~DesktopApplication() {
    for (const guint source : systemSignals_)
        g_source_remove(source);
}

int DesktopApplication::run(ApplicationClient& client) {
    client_ = &client;
    g_application_register(G_APPLICATION(application_.get()), nullptr, nullptr); // without a bus it runs all the same
    if (auto* bus = g_application_get_dbus_connection(G_APPLICATION(application_.get())))
        g_dbus_connection_set_exit_on_close(bus, FALSE); // nor is the end of the bus its own
    if (g_application_get_is_registered(G_APPLICATION(application_.get())) &&
        g_application_get_is_remote(G_APPLICATION(application_.get())))
        return handToPrimary() ? EXIT_SUCCESS : EXIT_FAILURE;

    // The toolkit sees none of our arguments: what they mean is the delegate's business.
    char* const program[] = {arguments_.front().data(), nullptr};
    const int status = g_application_run(G_APPLICATION(application_.get()), 1, const_cast<char**>(program));
    client_ = nullptr;
    if (launchFailure_)
        std::rethrow_exception(launchFailure_);
    return status;
}

bool DesktopApplication::handToPrimary() {
    // Another process took the name after we had asked for it.
    auto* application = G_APPLICATION(application_.get());
    if (const auto named = namedFile(arguments_); !named) {
        g_application_activate(application);
    } else {
        const auto file = GObjectRef<GFile>::adopt(g_file_new_for_path(named->path().c_str()));
        GFile* files[] = {file.get()};
        g_application_open(application, files, 1, "");
    }
    return g_dbus_connection_flush_sync(g_application_get_dbus_connection(application), nullptr, nullptr);
}

void DesktopApplication::terminate() {
    if (window_)
        window_->saveSize(); // while the defaults are still written
    g_application_quit(G_APPLICATION(application_.get()));
}

void DesktopApplication::activate() {
    if (window_)
        gtk_window_present(window_->handle());
}

void DesktopApplication::setWindow(DesktopWindow* window) {
    window_ = window;
    if (window_)
        preview_.watchKeys(window_->handle());
    showMenuInWindow();
}

void DesktopApplication::showMenuInWindow() {
    if (window_ && menu_)
        window_->setMenu(menu_->model().get());
}

void DesktopApplication::windowClosed() {
    if (client_ && client_->applicationShouldTerminateAfterLastWindowClosed())
        terminate();
}

void DesktopApplication::launchOrReopen() {
    if (!std::exchange(launched_, true)) {
        try {
            client_->applicationDidFinishLaunching();
            servePreviews();
        } catch (...) {
            // Without a window it would keep the name, and swallow every later start.
            launchFailure_ = std::current_exception();
            terminate();
        }
        return;
    }
    servePreviews(); // it may have been set up meanwhile
    client_->applicationShouldHandleReopen(window_ && gtk_widget_get_visible(GTK_WIDGET(window_->handle())));
}

void DesktopApplication::openHandedOver(GFile** files, int count) {
    std::vector<FileUrl> urls;
    for (int index = 0; index < count; ++index)
        if (const char* path = g_file_peek_path(files[index]))
            urls.emplace_back(path);
    preview_.endPreview();
    client_->applicationOpenFiles(urls);
    activate();
}

void DesktopApplication::servePreviews() {
    if (answersPreviews(FileUrl("/proc/self/exe").resolvingSymlinks()))
        preview_.serve(g_application_get_dbus_connection(G_APPLICATION(application_.get())));
}

void DesktopApplication::openPreview(const FileUrl& file) {
    client_->applicationOpenFiles({file});
    activate();
}

void DesktopApplication::closePreview() {
    if (window_)
        window_->performClose();
}

void DesktopApplication::fileShown(const FileUrl& file) {
    const auto& preview = preview_.file();
    if (preview && *preview != file)
        preview_.endPreview();
    if (!preview)
        noteRecentFile(file, about_.name);
}

void DesktopApplication::setMainMenu(MenuSpec menu) {
    menu_.reset();
    menu_ = std::make_unique<DesktopMenu>(application_.get(), std::move(menu),
                                          [this](const MenuItem& item) { perform(item); });

    const auto action = GObjectRef<GSimpleAction>::adopt(g_simple_action_new(menuAction, nullptr));
    connectForLife(action.get(), "activate", [this](GSimpleAction*, GVariant*) { toggleMenu(); });
    g_action_map_add_action(G_ACTION_MAP(application_.get()), G_ACTION(action.get()));
    const char* const keys[] = {"F10", nullptr};
    gtk_application_set_accels_for_action(application_.get(), (std::string("app.") + menuAction).c_str(), keys);
    showMenuInWindow();
}

void DesktopApplication::toggleMenu() {
    if (window_ && !window_->sheets().isShowing())
        window_->toggleMenu();
}

void DesktopApplication::perform(const MenuItem& item) {
    if (item.target == MenuTarget::firstResponder)
        performOwn(item.action);
    else if (client_ && !(window_ && window_->sheets().isShowing())) // a sheet has to be answered first
        client_->performMenuAction(item.action);
}

void DesktopApplication::performOwn(MenuAction action) {
    switch (action) {
    case MenuAction::about:
        return showAbout();
    case MenuAction::quit:
        return terminate();
    case MenuAction::undo:
    case MenuAction::redo:
    case MenuAction::cut:
    case MenuAction::copy:
    case MenuAction::paste:
    case MenuAction::selectAll:
        return performEditing(action, window_ ? window_->editingFocus().get() : nullptr);
    case MenuAction::hide: // the nearest that desktops here have
    case MenuAction::minimize:
        return window_ ? window_->miniaturize() : void();
    case MenuAction::closeWindow:
        return window_ ? window_->performClose() : void();
    case MenuAction::toggleFullScreen:
        return window_ ? window_->toggleFullScreen() : void();
    case MenuAction::showSettings:
    case MenuAction::openDialog:
        return; // always the delegate's
    }
}

void DesktopApplication::showAbout() {
    const std::string builtWith =
        "GTK " + std::to_string(gtk_get_major_version()) + "." + std::to_string(gtk_get_minor_version()) + "." +
        std::to_string(gtk_get_micro_version()) + "\nWebKitGTK " + std::to_string(webkit_get_major_version()) + "." +
        std::to_string(webkit_get_minor_version()) + "." + std::to_string(webkit_get_micro_version());
    gtk_show_about_dialog(window_ ? window_->handle() : nullptr, "program-name", about_.name.c_str(), "version",
                          about_.version.c_str(), "logo-icon-name", applicationId, "comments",
                          "Look at files, folders and archives", "license-type", GTK_LICENSE_MIT_X11,
                          "system-information", builtWith.c_str(), nullptr);
}

} // namespace quillmere::platform::gtk
