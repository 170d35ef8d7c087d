#include "platform/gtk/desktop/SingleInstance.h"

#include "platform/gtk/glib/GObjectRef.h"

#include "base/CommandLine.h"

#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include <unistd.h>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* objectPath = "/app/quillmere/viewer";
constexpr const char* applicationInterface = "org.freedesktop.Application";
constexpr std::chrono::milliseconds busLimit{800};
constexpr std::chrono::milliseconds primaryLimit{1500};

/// How far the probe has come. The thread that asks may hang for ever in a bus that accepts and stays silent, so it is
/// detached and shares only this.
struct Probe {
    std::mutex lock;
    std::condition_variable changed;
    bool hasBus = false;
    bool nameIsOwned = false;
    std::optional<InstanceRole> role;

    void answered(bool owned) {
        const std::lock_guard guard(lock);
        hasBus = true;
        nameIsOwned = owned;
        changed.notify_one();
    }
    void decide(InstanceRole decided) {
        const std::lock_guard guard(lock);
        role = decided;
        changed.notify_one();
    }
};

std::string sessionBusAddress() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address)
        return address;
    if (const char* folder = std::getenv("XDG_RUNTIME_DIR"); folder && *folder) {
        const std::string socket = std::string(folder) + "/bus";
        if (::access(socket.c_str(), F_OK) == 0) {
            const GlibText escaped(g_dbus_address_escape_value(socket.c_str()));
            return std::string("unix:path=") + escaped.get();
        }
    }
    return {};
}

GVariant* emptyPlatformData() {
    return g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0);
}

/// Opens the file in the process that owns the name, or only brings that process to the front.
bool handOver(GDBusConnection* bus, const std::optional<FileUrl>& file) {
    GVariant* parameters = nullptr;
    const char* method = "Activate";
    if (!file) {
        GVariant* data = emptyPlatformData();
        parameters = g_variant_new_tuple(&data, 1);
    } else {
        method = "Open";
        const std::string uri = file->uri();
        GVariant* text = g_variant_new_string(uri.c_str());
        GVariant* members[] = {g_variant_new_array(G_VARIANT_TYPE_STRING, &text, 1), emptyPlatformData()};
        parameters = g_variant_new_tuple(members, 2);
    }
    const GlibVariant answer(g_dbus_connection_call_sync(bus, applicationId, objectPath, applicationInterface, method,
                                                         parameters, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                                         static_cast<int>(primaryLimit.count()), nullptr, nullptr));
    return answer != nullptr;
}

void ask(Probe& probe, const std::string& address, const std::optional<FileUrl>& file) {
    // A connection of its own: the shared one would keep GLib's lock for as long as the bus stays silent.
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    const auto bus = GObjectRef<GDBusConnection>::adopt(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr));
    if (!bus)
        return probe.decide(InstanceRole::primary); // no bus at all: the toolkit copes with that by itself
    GVariant* name = g_variant_new_string(applicationId);
    const GlibVariant answer(
        g_dbus_connection_call_sync(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                    "NameHasOwner", g_variant_new_tuple(&name, 1), G_VARIANT_TYPE("(b)"),
                                    G_DBUS_CALL_FLAGS_NONE, static_cast<int>(busLimit.count()), nullptr, nullptr));
    if (!answer)
        return probe.decide(InstanceRole::alone);
    const GlibVariant owned(g_variant_get_child_value(answer.get(), 0));
    const bool isOwned = g_variant_get_boolean(owned.get());
    probe.answered(isOwned);
    if (!isOwned)
        return probe.decide(InstanceRole::primary);
    probe.decide(handOver(bus.get(), file) ? InstanceRole::handedOver : InstanceRole::alone);
}

/// Whatever else in the process looks for the bus must not wait for one that is silent, and accessibility, which needs
/// the bus, would only complain.
void doWithoutBus(InstanceRole role) {
    if (role == InstanceRole::alone)
        g_setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", TRUE);
    g_setenv("GTK_A11Y", "none", FALSE);
}

} // namespace

InstanceRole claimInstance(const std::vector<std::string>& arguments) {
    const auto address = sessionBusAddress();
    if (address.empty()) {
        doWithoutBus(InstanceRole::primary);
        return InstanceRole::primary;
    }
    const auto probe = std::make_shared<Probe>();
    std::thread([probe, address, file = namedFile(arguments)] {
        try {
            ask(*probe, address, file);
        } catch (...) {
            probe->decide(InstanceRole::alone);
        }
    }).detach();

    std::unique_lock guard(probe->lock);
    const auto decided = [&] { return probe->role.has_value(); };
    probe->changed.wait_for(guard, busLimit, [&] { return decided() || probe->nameIsOwned; });
    if (probe->nameIsOwned)
        probe->changed.wait_for(guard, primaryLimit, decided);
    const auto role = probe->role.value_or(InstanceRole::alone);
    if (!probe->hasBus)
        doWithoutBus(role);
    return role;
}

} // namespace quillmere::platform::gtk
