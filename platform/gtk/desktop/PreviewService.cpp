#include "platform/gtk/desktop/PreviewService.h"

#include "platform/gtk/desktop/PreviewProtocol.h"

#include <utility>
#include <vector>

namespace quillmere::platform::gtk {

namespace {

using namespace previewProtocol;

struct NodeUnref {
    void operator()(GDBusNodeInfo* node) const noexcept { g_dbus_node_info_unref(node); }
};
using NodeInfo = std::unique_ptr<GDBusNodeInfo, NodeUnref>;

std::string textAt(GVariant* parameters, gsize index) {
    const GlibVariant child(g_variant_get_child_value(parameters, index));
    return g_variant_get_string(child.get(), nullptr);
}

bool flagAt(GVariant* parameters, gsize index) {
    const GlibVariant child(g_variant_get_child_value(parameters, index));
    return g_variant_get_boolean(child.get());
}

/// Where an arrow key moves the selection.
std::optional<GtkDirectionType> directionOf(guint key) {
    switch (key) {
    case GDK_KEY_Up:
    case GDK_KEY_KP_Up:
        return GTK_DIR_UP;
    case GDK_KEY_Down:
    case GDK_KEY_KP_Down:
        return GTK_DIR_DOWN;
    case GDK_KEY_Left:
    case GDK_KEY_KP_Left:
        return GTK_DIR_LEFT;
    case GDK_KEY_Right:
    case GDK_KEY_KP_Right:
        return GTK_DIR_RIGHT;
    default:
        return std::nullopt;
    }
}

/// The program that a service file starts.
std::optional<FileUrl> programOfService(const std::string& path) {
    const KeyFile file(g_key_file_new());
    if (!g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr))
        return std::nullopt;
    const GlibText command(g_key_file_get_string(file.get(), "D-BUS Service", "Exec", nullptr));
    char** words = nullptr;
    if (!command || !g_shell_parse_argv(command.get(), nullptr, &words, nullptr))
        return std::nullopt;
    const TextList owned(words);
    return FileUrl(words[0]).resolvingSymlinks();
}

} // namespace

bool answersPreviews(const FileUrl& program) {
    std::vector<std::string> folders{g_get_user_data_dir()};
    for (const char* const* folder = g_get_system_data_dirs(); *folder; ++folder)
        folders.emplace_back(*folder);
    for (const auto& folder : folders) {
        const std::string path = folder + "/dbus-1/services/" + busName + ".service";
        if (g_file_test(path.c_str(), G_FILE_TEST_EXISTS)) // the first one counts
            return programOfService(path) == program.resolvingSymlinks();
    }
    return false;
}

PreviewService::~PreviewService() {
    if (name_ != 0)
        g_bus_unown_name(name_);
    if (registration_ != 0)
        g_dbus_connection_unregister_object(bus_.get(), registration_);
}

const GDBusInterfaceVTable& PreviewService::calls() {
    static const GDBusInterfaceVTable table{
        .method_call =
            [](GDBusConnection*, const char*, const char*, const char*, const char* method, GVariant* parameters,
               GDBusMethodInvocation* invocation, gpointer self) {
                guarded([&] { static_cast<PreviewService*>(self)->call(method, parameters, invocation); });
            },
        .get_property = [](GDBusConnection*, const char*, const char*, const char*, const char* name, GError**,
                           gpointer self) -> GVariant* { return static_cast<PreviewService*>(self)->property(name); },
        .set_property = nullptr,
        .padding = {}};
    return table;
}

void PreviewService::serve(GDBusConnection* bus) {
    if (name_ != 0 || !bus)
        return;
    bus_ = GObjectRef<GDBusConnection>::share(bus);
    const NodeInfo node(g_dbus_node_info_new_for_xml(introspection, nullptr));
    registration_ =
        g_dbus_connection_register_object(bus, objectPath, node->interfaces[0], &calls(), this, nullptr, nullptr);
    if (registration_ != 0)
        name_ =
            g_bus_own_name_on_connection(bus, busName, G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr, nullptr);
}

void PreviewService::call(const std::string& method, GVariant* parameters, GDBusMethodInvocation* invocation) {
    if (method == "ShowFile")
        return showFile(parameters, invocation);
    g_dbus_method_invocation_return_value(invocation, nullptr);
    if (file_) {
        endPreview();
        host_.closePreview();
    }
}

void PreviewService::showFile(GVariant* parameters, GDBusMethodInvocation* invocation) {
    const auto file = FileUrl::fromUri(textAt(parameters, 0));
    if (!file)
        return g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                                                             "Only files of this machine can be shown.");
    g_dbus_method_invocation_return_value(invocation, nullptr);
    parentHandle_ = textAt(parameters, 1);
    if (flagAt(parameters, 2) && file_ == file) {
        endPreview();
        return host_.closePreview();
    }
    host_.openPreview(*file);
    file_ = file; // opening anything ends the preview before
    tellVisible();
}

GVariant* PreviewService::property(const std::string& name) const {
    if (name == "Visible")
        return g_variant_new_boolean(file_.has_value());
    return g_variant_new_string(parentHandle_.c_str());
}

void PreviewService::endPreview() {
    if (!std::exchange(file_, std::nullopt))
        return;
    parentHandle_.clear();
    tellVisible();
}

void PreviewService::tellVisible() {
    if (!bus_)
        return;
    GVariantBuilder changed;
    g_variant_builder_init(&changed, G_VARIANT_TYPE_VARDICT);
    for (const char* name : {"Visible", "ParentHandle"})
        g_variant_builder_add(&changed, "{sv}", name, property(name));
    const char* const none[] = {nullptr};
    g_dbus_connection_emit_signal(bus_.get(), nullptr, objectPath, "org.freedesktop.DBus.Properties",
                                  "PropertiesChanged", g_variant_new("(sa{sv}^as)", interfaceName, &changed, none),
                                  nullptr);
}

void PreviewService::watchKeys(GtkWindow* window) {
    GtkEventController* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    connectForLife(keys, "key-pressed",
                   [this](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) -> gboolean {
                       return keyPressed(key, modifiers);
                   });
    gtk_widget_add_controller(GTK_WIDGET(window), keys);
}

gboolean PreviewService::keyPressed(guint key, GdkModifierType modifiers) {
    constexpr auto meaning =
        static_cast<GdkModifierType>(GDK_CONTROL_MASK | GDK_ALT_MASK | GDK_SHIFT_MASK | GDK_SUPER_MASK);
    if (!file_ || (modifiers & meaning) != 0)
        return FALSE;
    if (key == GDK_KEY_space || key == GDK_KEY_KP_Space || key == GDK_KEY_Escape) {
        endPreview();
        host_.closePreview();
        return TRUE;
    }
    const auto direction = directionOf(key);
    if (direction)
        g_dbus_connection_emit_signal(bus_.get(), nullptr, objectPath, interfaceName, "SelectionEvent",
                                      g_variant_new("(u)", static_cast<guint>(*direction)), nullptr);
    return direction.has_value();
}

} // namespace quillmere::platform::gtk
