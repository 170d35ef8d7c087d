#include "platform/common/Confinement.h"

#include "base/Errors.h"
#include "platform/common/FontFolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace quillmere::platform {

/// From the highest down: older versions of bubblewrap cannot close off further namespaces, or bound the memory of a
/// folder.
enum class Confinement::Wall { complete, withoutEndOfNamespaces, withoutSizes };

namespace {

constexpr const char* privateFolder = "/tmp";
constexpr const char* privateHome = "/tmp/home";
/// The private folder lives in memory.
constexpr const char* privateFolderBytes = "1073741824";

/// Programs, libraries and the settings that loading them needs: nothing of the user, nothing secret.
constexpr std::array systemFolders{"/usr",    "/bin", "/sbin",         "/lib",       "/lib32",     "/lib64",
                                   "/libx32", "/opt", "/Applications", "/nix/store", "/gnu/store", "/snap"};
constexpr std::array systemSettings{"/etc/alternatives",
                                    "/etc/fonts",
                                    "/etc/group",
                                    "/etc/ImageMagick-6",
                                    "/etc/ld.so.cache",
                                    "/etc/ld.so.conf",
                                    "/etc/ld.so.conf.d",
                                    "/etc/libreoffice",
                                    "/etc/locale.alias",
                                    "/etc/localtime",
                                    "/etc/nsswitch.conf",
                                    "/etc/paperspecs",
                                    "/etc/papersize",
                                    "/etc/passwd",
                                    "/var/cache/fontconfig",
                                    "/var/lib/libreoffice",
                                    "/var/spool/libreoffice"};

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

bool isFolder(const FileUrl& file) {
    std::error_code error;
    return std::filesystem::is_directory(file.filesystemPath(), error);
}

/// What a program outside the system's folders needs: itself, the libraries beside its "bin", and of an office suite
/// everything. Never the user's home.
std::vector<FileUrl> needsOf(const FileUrl& executable, const FileUrl& home) {
    std::vector<FileUrl> needs{executable};
    const FileUrl folder = executable.parent();
    const FileUrl installation = folder.parent();
    const std::string name = folder.lastPathComponent();
    if ((name == "program" || name == "MacOS") && installation != home && !isBelow(home.path(), installation.path()))
        needs.push_back(installation);
    else if (name == "bin")
        for (const char* libraries : {"lib", "lib64"})
            if (const FileUrl beside = installation.appending(libraries); isFolder(beside))
                needs.push_back(beside);
    return needs;
}

Arguments environment(std::string_view home, std::string_view temporary, const Directories& user, UserFonts fonts) {
    Arguments variables{"PATH=/usr/local/bin:/usr/bin:/bin", "LANG=C.UTF-8", "HOME=" + std::string(home),
                        "TMPDIR=" + std::string(temporary)};
    // The font folder below it then has the path under which its cache was made.
    if (fonts == UserFonts::readable && user.applicationSupport)
        variables.push_back("XDG_DATA_HOME=" + user.applicationSupport->path());
    return variables;
}

void bindFonts(Arguments& arguments, const Directories& user) {
    const FileUrl home(privateHome);
    const auto bind = [&](const FileUrl& from, const FileUrl& to) {
        append(arguments, {"--ro-bind-try", from.path(), to.path()});
    };
    for (const auto& folder : fontFolders(user.home.resolvingSymlinks())) {
        if (isPartOfSystem(folder))
            continue;
        bind(folder, folder);
        if (isBelow(folder.path(), user.home.path()))
            bind(folder, home.appending(folder.path().substr(user.home.path().size() + 1)));
    }
    bind(user.home.appending(".config/fontconfig"), home.appending(".config/fontconfig"));
    if (user.caches)
        bind(user.caches->appending("fontconfig"), home.appending(".cache/fontconfig"));
}

} // namespace

Confinement::Confinement(Options options) : options_(std::move(options)) {}

bool Confinement::hasWall() const {
    return wall().has_value();
}

std::optional<Confinement::Wall> Confinement::wall() const {
    if (options_.mode == Mode::withoutWall)
        return std::nullopt;
    const std::lock_guard lock(mutex_);
    if (standing_)
        return standing_;
    for (const Wall wall : {Wall::complete, Wall::withoutEndOfNamespaces, Wall::withoutSizes})
        switch (tryWall(wall)) {
        case Trial::stands:
            return standing_ = wall;
        case Trial::late:
            return wall;
        case Trial::refused:
            break;
        }
    if (!std::exchange(hasToldOfRefusal_, true))
        std::fprintf(stderr, "Converters run without their wall: bubblewrap is missing or refused here.\n");
    return std::nullopt;
}

namespace {

/// The wall without any input: what the trial run uses, and every run begins with. No new session is asked for, since
/// every child of ours already has its own; this way a signal to its group reaches everything inside.
template <typename Wall>
Arguments openWall(Wall wall) {
    Arguments arguments{"--unshare-all", "--die-with-parent", "--cap-drop", "ALL"};
    if (wall == Wall::complete)
        append(arguments, {"--unshare-user", "--disable-userns"});
    append(arguments, {"--proc", "/proc", "--dev", "/dev"});
    if (wall != Wall::withoutSizes)
        append(arguments, {"--size", privateFolderBytes});
    append(arguments, {"--tmpfs", privateFolder, "--dir", privateHome});
    for (const char* folder : systemFolders)
        append(arguments, {"--ro-bind-try", folder, folder});
    for (const char* setting : systemSettings)
        append(arguments, {"--ro-bind-try", setting, setting});
    return arguments;
}

void closeWall(Arguments& arguments, const std::string& executable) {
    // The root and the device folder are memory too. The shell does nothing but turn into the program; if that fails,
    // its status says so, which bubblewrap's own would not.
    append(arguments, {"--remount-ro", "/dev", "--remount-ro", "/", "--chdir", privateFolder, "--", "/bin/sh", "-c",
                       R"(exec "$0" "$@")", executable});
}

} // namespace

Confinement::Trial Confinement::tryWall(Wall wall) const noexcept {
    try {
        if (::access(options_.bubblewrap.path().c_str(), X_OK) != 0)
            return Trial::refused;
        ProcessSpec trial{.executable = options_.bubblewrap, .arguments = openWall(wall), .environment = Arguments{}};
        closeWall(trial.arguments, "/usr/bin/true");
        ChildProcess child(trial);
        if (!child.waitUntil(steadyNow() + options_.trialLimit))
            return Trial::late;
        return child.wait().isSuccess() ? Trial::stands : Trial::refused;
    } catch (const std::filesystem::filesystem_error&) {
        return Trial::refused;
    } catch (const std::exception&) {
        return Trial::late; // no process to be had now
    }
}

ProcessSpec Confinement::confine(ProcessSpec program, const ConfinedAccess& access) const {
    // Behind the wall a program that is not there would have to be told from one that failed.
    if (::access(program.executable.path().c_str(), X_OK) != 0)
        throwFileError(errno, program.executable.path());
    const auto chosen = wall();
    return chosen ? walled(std::move(program), access, *chosen) : fenced(std::move(program), access);
}

ProcessSpec Confinement::fenced(ProcessSpec program, const ConfinedAccess& access) const {
    FencePaths paths{.readable = access.readable, .writable = access.writable};
    for (const auto& needed : needsOf(program.executable.resolvingSymlinks(), options_.user.home))
        paths.readable.push_back(needed);
    for (const char* folder : systemFolders)
        paths.readable.emplace_back(folder);
    for (const char* setting : systemSettings)
        paths.readable.emplace_back(setting);
    if (access.fonts == UserFonts::readable)
        std::ranges::copy(fontFolders(options_.user.home.resolvingSymlinks()), std::back_inserter(paths.readable));
    const std::string home = access.writable ? access.writable->path() : "/nonexistent";
    program.environment = environment(home, access.writable ? home : privateFolder, options_.user, access.fonts);
    program.fence = makeKernelFence(paths);
    return program;
}

ProcessSpec Confinement::walled(ProcessSpec program, const ConfinedAccess& access, Wall wall) const {
    Arguments arguments = openWall(wall);
    // A link in a system folder may lead out of it, so that only what it leads to can be started.
    const FileUrl resolved = program.executable.resolvingSymlinks();
    const FileUrl executable = isPartOfSystem(resolved) ? program.executable : resolved;
    if (!isPartOfSystem(resolved))
        for (const auto& needed : needsOf(resolved, options_.user.home.resolvingSymlinks()))
            append(arguments, {"--ro-bind", needed.path(), needed.path()});
    if (access.fonts == UserFonts::readable)
        bindFonts(arguments, options_.user);
    for (const auto& readable : access.readable)
        append(arguments, {"--ro-bind", readable.path(), readable.path()});
    if (access.writable)
        append(arguments, {"--bind", access.writable->path(), access.writable->path()});
    closeWall(arguments, executable.path());
    arguments.insert(arguments.end(), program.arguments.begin(), program.arguments.end());
    program.executable = options_.bubblewrap;
    program.arguments = std::move(arguments);
    program.environment = environment(privateHome, privateFolder, options_.user, access.fonts);
    return program;
}

} // namespace quillmere::platform
