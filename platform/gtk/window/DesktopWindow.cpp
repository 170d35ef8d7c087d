#include "platform/gtk/window/DesktopWindow.h"

#include "platform/gtk/view/TextScale.h"
#include "platform/gtk/web/WebViewSettings.h"
#include "platform/gtk/window/KeyboardOrder.h"

#include <gdk/x11/gdkx.h>

namespace quillmere::platform::gtk {

namespace {

/// Popovers and drags take the focus for a few milliseconds; the delegate hears only of what lasts.
constexpr std::chrono::milliseconds keyDelay{50};

GObjectRef<GtkWindow> makeWindow(GtkApplication* application, const WindowSpec& spec) {
    GtkWidget* window = gtk_application_window_new(application);
    gtk_application_window_set_show_menubar(GTK_APPLICATION_WINDOW(window), FALSE);
    gtk_widget_add_css_class(window, "quillmere");
    gtk_widget_set_size_request(window, static_cast<int>(spec.minimumSize.width),
                                static_cast<int>(spec.minimumSize.height));
    auto owned = GObjectRef<GtkWindow>::share(GTK_WINDOW(window));
    gtk_window_set_title(owned.get(), spec.title.c_str());
    // An empty title bar has the toolkit leave all decoration to us without drawing any of its own.
    GtkWidget* titleBar = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
    gtk_widget_set_visible(titleBar, FALSE);
    gtk_window_set_titlebar(owned.get(), titleBar);
    return owned;
}

GtkOverlay* makeBody(GtkWindow* window) {
    GtkWidget* body = gtk_overlay_new();
    gtk_widget_add_css_class(body, "window-body");
    gtk_widget_set_overflow(body, GTK_OVERFLOW_HIDDEN); // the corners cut the page too
    gtk_window_set_child(window, body);
    return GTK_OVERLAY(body);
}

} // namespace

DesktopWindow::DesktopWindow(const WindowSpec& spec, Environment environment)
    : environment_(environment), window_(makeWindow(environment_.application.handle(), spec)),
      body_(makeBody(window_.get())), controls_(body_), fullScreenSwitch_(window_.get()), blur_(window_.get()),
      size_(window_.get(), spec, environment_.defaults), drag_(window_.get()), edges_(window_.get(), body_),
      sheets_(window_.get(), body_), renderer_(*this), popover_(window_.get(), body_) {
    watch();
    watchGround();
    environment_.application.setWindow(this);
}

DesktopWindow::~DesktopWindow() {
    environment_.application.setWindow(nullptr);
    connections_.clear();
    renderer_.unmount();
    gtk_window_destroy(window_.get());
}

void DesktopWindow::watch() {
    connections_.push_back(connect(window_.get(), "notify::is-active", [this](GObject*, GParamSpec*) {
        keySettling_.after(keyDelay, [this] { keyStateSettled(); });
    }));
    connections_.push_back(connect(window_.get(), "notify::fullscreened", [this](GObject*, GParamSpec*) {
        if (const bool now = isFullScreen(); std::exchange(fullScreen_, now) != now) {
            controls_.setFullScreen(now);
            fullScreenSwitch_.changed(now);
            if (const auto client = client_.lock())
                now ? client->windowDidEnterFullScreen() : client->windowDidExitFullScreen();
        }
    }));
    connections_.push_back(connect(window_.get(), "notify::focus-widget", [this](GObject*, GParamSpec*) {
        if (GtkWidget* focus = gtk_window_get_focus(window_.get()); focus && !controls_.holds(focus))
            focus_.set(focus);
    }));
    connections_.push_back(
        connect(window_.get(), "close-request", [this](GtkWindow*) -> gboolean { return closeRequested(); }));
}

// What is behind the window, and how large the user wants text, may change at any time.
void DesktopWindow::watchGround() {
    connections_.push_back(connect(gtk_widget_get_display(GTK_WIDGET(window_.get())), "notify::composited",
                                   [this](GObject*, GParamSpec*) { groundChanged(); }));
    connections_.push_back(connect(gtk_settings_get_default(), "notify::gtk-xft-dpi", [this](GObject*, GParamSpec*) {
        renderer_.refreshSizes();
        popover_.refreshSizes();
    }));
    connections_.push_back(connect(window_.get(), "realize", [this](GtkWidget*) {
        GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window_.get()));
        connections_.push_back(connect(surface, "notify::state", [this](GObject*, GParamSpec*) { groundChanged(); }));
        connections_.push_back(
            connect(surface, "layout", [this](GdkSurface*, int, int) { blur_.ask(GTK_WIDGET(body_)); }));
        groundChanged();
    }));
}

void DesktopWindow::groundChanged() {
    blur_.ask(GTK_WIDGET(body_));
    renderer_.refreshTints();
}

void DesktopWindow::keyStateSettled() {
    const bool now = gtk_window_is_active(window_.get());
    if (std::exchange(key_, now) == now)
        return;
    if (const auto client = client_.lock())
        now ? client->windowDidBecomeKey() : client->windowDidResignKey();
}

gboolean DesktopWindow::closeRequested() {
    size_.flush();
    gtk_widget_set_visible(GTK_WIDGET(window_.get()), FALSE);
    environment_.application.windowClosed();
    return TRUE; // the window itself goes with its owner
}

void DesktopWindow::setContent(view::ViewRef content) {
    native_ = nullptr;
    const auto widget = renderer_.mount(std::move(content));
    gtk_overlay_set_child(body_, widget.get());
}

void DesktopWindow::setTitle(std::string title) {
    gtk_window_set_title(window_.get(), title.c_str());
}

void DesktopWindow::setRepresentedFile(std::optional<FileUrl> file) {
    // Desktops here have no place in a window's frame for the file that it shows.
    if (file)
        environment_.application.fileShown(*file);
}

void DesktopWindow::center() {
    centerWhenMapped(window_.get());
}

void DesktopWindow::makeKeyAndOrderFront() {
    if (native_ && !gtk_window_get_focus(window_.get()))
        gtk_widget_grab_focus(native_);
    gtk_window_present(window_.get());
}

bool DesktopWindow::isFullScreen() const {
    return gtk_window_is_fullscreen(window_.get());
}

void DesktopWindow::toggleFullScreen() {
    fullScreenSwitch_.toggle();
}

void DesktopWindow::miniaturize() {
    gtk_window_minimize(window_.get());
}

void DesktopWindow::performClose() {
    gtk_window_close(window_.get());
}

void DesktopWindow::tintChanged(const view::Color& tint) {
    tint_ = tint;
    style_.setTheme(view::Theme::fromTint(tint));
    if (native_)
        groundPage(native_, tint);
}

void DesktopWindow::nativeMounted(GtkWidget* widget) {
    if (native_)
        return; // a preview over the page
    native_ = widget;
    if (tint_)
        groundPage(widget, *tint_);
    drag_.track(widget);
    repairTabOrder(window_.get(), widget);
}

bool DesktopWindow::showsDesktop() const {
    return blur_.isOffered();
}

double DesktopWindow::contentHeight() const {
    return gtk_widget_get_height(GTK_WIDGET(body_)) / textScale();
}

std::optional<double> DesktopWindow::screenHeight() const {
    GdkSurface* surface = gtk_native_get_surface(GTK_NATIVE(window_.get()));
    GdkMonitor* monitor =
        surface ? gdk_display_get_monitor_at_surface(gdk_surface_get_display(surface), surface) : nullptr;
    if (!monitor)
        return std::nullopt;
    GdkRectangle area{};
    if (GDK_IS_X11_MONITOR(monitor))
        gdk_x11_monitor_get_workarea(monitor, &area);
    else
        gdk_monitor_get_geometry(monitor, &area);
    return area.height / textScale();
}

void DesktopWindow::showPopover(view::ViewRef content, const view::ViewRef& anchor) {
    if (GtkWidget* widget = anchor ? renderer_.widgetOf(*anchor) : nullptr)
        popover_.show(std::move(content), widget);
}

} // namespace quillmere::platform::gtk
