#include "platform/common/Confinement.h"

#include "base/Errors.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace quillmere::platform {

namespace {

constexpr const char* bubblewrap = "/usr/bin/bwrap";
constexpr const char* privateFolder = "/tmp";
constexpr const char* privateHome = "/tmp/home";
/// The private folder lives in memory.
constexpr const char* privateFolderBytes = "1073741824";

/// Programs, libraries and the settings that loading them needs: nothing of the user, nothing secret.
constexpr std::array systemFolders{"/usr",   "/bin",    "/sbin", "/lib",         "/lib32",
                                   "/lib64", "/libx32", "/opt",  "/Applications"};
constexpr std::array systemSettings{
    "/etc/alternatives",   "/etc/fonts",        "/etc/group",       "/etc/ImageMagick-6", "/etc/ld.so.cache",
    "/etc/ld.so.conf",     "/etc/ld.so.conf.d", "/etc/libreoffice", "/etc/locale.alias",  "/etc/localtime",
    "/etc/nsswitch.conf",  "/etc/paperspecs",   "/etc/papersize",   "/etc/passwd",        "/var/cache/fontconfig",
    "/var/lib/libreoffice"};

using Arguments = std::vector<std::string>;

void append(Arguments& arguments, std::initializer_list<std::string_view> added) {
    arguments.insert(arguments.end(), added.begin(), added.end());
}

bool isBelow(const std::string& path, std::string_view folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

bool isPartOfSystem(const FileUrl& file) {
    return std::ranges::any_of(systemFolders, [&](const char* folder) { return isBelow(file.path(), folder); });
}

/// The wall without any input: what the trial run uses, and every run begins with. No new session is asked for, since
/// every child of ours already has its own; this way a signal to its group reaches everything inside.
Arguments wall() {
    Arguments arguments;
    append(arguments, {"--unshare-all", "--die-with-parent", "--cap-drop", "ALL", "--proc", "/proc", "--dev", "/dev",
                       "--size", privateFolderBytes, "--tmpfs", privateFolder, "--dir", privateHome});
    for (const char* folder : systemFolders)
        append(arguments, {"--ro-bind-try", folder, folder});
    for (const char* setting : systemSettings)
        append(arguments, {"--ro-bind-try", setting, setting});
    return arguments;
}

void closeWall(Arguments& arguments, const std::string& executable) {
    // The root and the device folder are memory too.
    append(arguments, {"--remount-ro", "/dev", "--remount-ro", "/", "--chdir", privateFolder, "--", executable});
}

Arguments environment(std::string_view home, std::string_view temporary) {
    return {"PATH=/usr/local/bin:/usr/bin:/bin", "LANG=C.UTF-8", "HOME=" + std::string(home),
            "TMPDIR=" + std::string(temporary)};
}

bool tryWall() noexcept {
    try {
        if (::access(bubblewrap, X_OK) != 0)
            return false;
        ProcessSpec trial{.executable = FileUrl(bubblewrap), .arguments = wall(), .environment = environment("/", "/")};
        closeWall(trial.arguments, "/usr/bin/true");
        ChildProcess child(trial);
        return child.waitUntil(steadyNow() + std::chrono::seconds(5)) && child.wait().isSuccess();
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

Confinement::Confinement(Mode mode) : mode_(mode) {}

bool Confinement::isAvailable() const {
    std::call_once(probed_, [this] { isAvailable_ = mode_ == Mode::automatic && tryWall(); });
    return isAvailable_;
}

ProcessSpec Confinement::confine(ProcessSpec program, const ConfinedAccess& access) const {
    // Behind the wall a program that cannot be started looks like one that failed.
    if (::access(program.executable.path().c_str(), X_OK) != 0)
        throwFileError(errno, program.executable.path());
    if (!isAvailable()) {
        const std::string home = access.writable ? access.writable->path() : "/nonexistent";
        program.environment = environment(home, access.writable ? home : privateFolder);
        return program;
    }
    Arguments arguments = wall();
    const FileUrl executable = program.executable.resolvingSymlinks();
    if (!isPartOfSystem(executable))
        append(arguments, {"--ro-bind", executable.path(), program.executable.path()});
    for (const auto& readable : access.readable)
        append(arguments, {"--ro-bind", readable.path(), readable.path()});
    if (access.writable)
        append(arguments, {"--bind", access.writable->path(), access.writable->path()});
    closeWall(arguments, program.executable.path());
    arguments.insert(arguments.end(), program.arguments.begin(), program.arguments.end());
    program.executable = FileUrl(bubblewrap);
    program.arguments = std::move(arguments);
    program.environment = environment(privateHome, privateFolder);
    return program;
}

} // namespace quillmere::platform
