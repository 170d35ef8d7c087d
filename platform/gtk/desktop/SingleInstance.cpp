#include "platform/gtk/desktop/SingleInstance.h"

#include "base/CommandLine.h"
#include "base/FileDescriptor.h"
#include "platform/gtk/glib/GObjectRef.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <optional>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace quillmere::platform::gtk {

namespace {

constexpr const char* objectPath = "/app/quillmere/viewer";
constexpr const char* applicationInterface = "org.gtk.Application";
constexpr std::chrono::milliseconds busLimit{800};
constexpr std::chrono::milliseconds primaryLimit{10'000};

/// What the process that asks tells, a byte at a time.
enum class Finding : char {
    noBus = 'n',
    nameIsFree = 'f',
    nameIsOwned = 'o', // the only one that another follows
    handedOver = 'h',
    silence = 's',
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

/// A variable as it was when the program started: the toolkit takes some out of the environment as it is loaded.
std::string startedWith(const std::string& variable) {
    std::ifstream environment("/proc/self/environ", std::ios::binary);
    for (std::string entry; std::getline(environment, entry, '\0');)
        if (entry.starts_with(variable + "="))
            return entry.substr(variable.size() + 1);
    return {};
}

/// What the desktop gave this start, so that the window that answers it may come to the front.
GVariant* platformData() {
    GVariantBuilder data;
    g_variant_builder_init(&data, G_VARIANT_TYPE_VARDICT);
    const std::pair<const char*, const char*> tokens[] = {{"desktop-startup-id", "DESKTOP_STARTUP_ID"},
                                                          {"activation-token", "XDG_ACTIVATION_TOKEN"}};
    for (const auto& [key, variable] : tokens)
        if (const auto token = startedWith(variable); !token.empty() && g_utf8_validate(token.c_str(), -1, nullptr))
            g_variant_builder_add(&data, "{sv}", key, g_variant_new_string(token.c_str()));
    return g_variant_builder_end(&data);
}

std::optional<bool> nameHasOwner(GDBusConnection* bus, const char* name, std::chrono::milliseconds limit) {
    const GlibVariant answer(
        g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                    "NameHasOwner", g_variant_new("(s)", name), G_VARIANT_TYPE("(b)"),
                                    G_DBUS_CALL_FLAGS_NONE, static_cast<int>(limit.count()), nullptr, nullptr));
    gboolean owned = FALSE;
    if (!answer)
        return std::nullopt;
    g_variant_get(answer.get(), "(b)", &owned);
    return owned != FALSE;
}

/// Opens the file in the process that owns the name, or only brings that process to the front. It is told who asks:
/// when it comes to the question late, and nobody waits for the answer any more, it leaves the file alone.
bool handOver(GDBusConnection* bus, const std::optional<FileUrl>& file) {
    GVariant* parameters = nullptr;
    if (!file) {
        parameters = g_variant_new("(@a{sv})", platformData());
    } else {
        const std::string uri = file->uri();
        const char* const uris[] = {uri.c_str(), nullptr};
        parameters = g_variant_new("(^ass@a{sv})", uris, g_dbus_connection_get_unique_name(bus), platformData());
    }
    const GlibVariant answer(g_dbus_connection_call_sync(
        bus, applicationId, objectPath, applicationInterface, file ? "Open" : "Activate", parameters, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, static_cast<int>(primaryLimit.count()), nullptr, nullptr));
    return answer != nullptr;
}

/// A call is not answered when the other process has ended meanwhile: then the name is free.
Finding findOut(const std::string& address, const std::optional<FileUrl>& file,
                const std::function<void(Finding)>& tell) {
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    const auto bus = GObjectRef<GDBusConnection>::adopt(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr));
    if (!bus)
        return Finding::noBus;
    auto isOwned = nameHasOwner(bus.get(), applicationId, busLimit);
    if (isOwned == true) {
        tell(Finding::nameIsOwned);
        if (handOver(bus.get(), file))
            return Finding::handedOver;
        isOwned = nameHasOwner(bus.get(), applicationId, busLimit);
    }
    return isOwned == false ? Finding::nameIsFree : Finding::silence;
}

/// Asks in a process of its own, which shares nothing with this one but a pipe: what hangs in a bus that accepts and
/// stays silent can be ended, and no thread stands in the way of what this process has still to set up.
class Question {
public:
    Question(const std::string& address, const std::optional<FileUrl>& file) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return;
        const FileDescriptor write(ends[1]);
        answers_.reset(ends[0]);
        process_ = ::fork();
        if (process_ != 0)
            return;
        const auto tell = [&](Finding finding) { return ::write(write.get(), &finding, sizeof finding) > 0; };
        const Finding last = findOut(address, file, tell);
        // The bus sees this end before the other process hears of it: what was handed over is withdrawn by now.
        tell(last);
        ::_exit(EXIT_SUCCESS);
    }
    ~Question() {
        if (process_ <= 0)
            return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    Finding next(std::chrono::milliseconds limit) const {
        pollfd answered{.fd = answers_.get(), .events = POLLIN, .revents = 0};
        auto finding = Finding::silence;
        if (process_ > 0 && ::poll(&answered, 1, static_cast<int>(limit.count())) > 0 &&
            ::read(answers_.get(), &finding, sizeof finding) != sizeof finding)
            finding = Finding::silence;
        return finding;
    }

private:
    pid_t process_ = -1;
    FileDescriptor answers_;
};

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
    auto finding = Finding::silence;
    {
        const Question question(address, namedFile(arguments));
        finding = question.next(busLimit);
        if (finding == Finding::nameIsOwned) {
            finding = question.next(primaryLimit + busLimit);
            if (finding == Finding::silence)
                return InstanceRole::alone; // the bus itself is well
        }
    }
    switch (finding) {
    case Finding::handedOver:
        return InstanceRole::handedOver;
    case Finding::nameIsFree:
    case Finding::nameIsOwned:
        return InstanceRole::primary;
    case Finding::noBus:
        doWithoutBus(InstanceRole::primary);
        return InstanceRole::primary;
    case Finding::silence:
        break;
    }
    doWithoutBus(InstanceRole::alone);
    return InstanceRole::alone;
}

bool isStillWanted(GDBusConnection* bus, const char* asker) {
    if (!bus || !asker || *asker != ':') // another program's way to open a file
        return true;
    return nameHasOwner(bus, asker, busLimit).value_or(true);
}

} // namespace quillmere::platform::gtk
