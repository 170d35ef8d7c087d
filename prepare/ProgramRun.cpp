#include "prepare/ProgramRun.h"

#include "base/Errors.h"
#include "base/RegularFile.h"
#include "platform/common/ProcessRegistry.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <filesystem>
#include <glob.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace quillmere {

namespace {

constexpr auto pollInterval = std::chrono::milliseconds(50);
/// Between the request to end and the end by force.
constexpr auto grace = std::chrono::seconds(2);
/// Converters give way to the window.
constexpr int niceness = 5;
/// Of a program that could not be started, by the custom of shells and loaders.
constexpr int cannotExecute = 126;
constexpr int notFound = 127;

/// Room for the largest honest file. The time is of all threads together: a converter on many cores may use a lot of it
/// within its three minutes.
constexpr platform::ResourceLimits limits{
    .addressSpace = 8ULL << 30, .cpuSeconds = 3600, .fileSize = 16ULL << 30, .openFiles = 1024, .processes = 512};

bool isExecutableFile(const FileUrl& candidate) {
    struct stat info{};
    return ::stat(candidate.path().c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
           ::access(candidate.path().c_str(), X_OK) == 0;
}

std::vector<FileUrl> matches(const FileUrl& pattern) {
    std::vector<FileUrl> found;
    glob_t names{};
    if (::glob(pattern.path().c_str(), GLOB_NOSORT, nullptr, &names) == 0)
        for (size_t i = 0; i < names.gl_pathc; ++i)
            found.emplace_back(std::filesystem::path(names.gl_pathv[i]));
    ::globfree(&names);
    std::ranges::sort(
        found, [](const FileUrl& a, const FileUrl& b) { return ::strverscmp(a.path().c_str(), b.path().c_str()) > 0; });
    return found;
}

} // namespace

std::vector<FileUrl> executables(const std::vector<FileUrl>& candidates) {
    std::vector<FileUrl> found;
    for (const auto& candidate : candidates) {
        const bool isPattern = candidate.path().find('*') != std::string::npos;
        for (const auto& file : isPattern ? matches(candidate) : std::vector{candidate})
            if (isExecutableFile(file))
                found.push_back(file);
    }
    return found;
}

ProgramRunner::ProgramRunner(const platform::Confinement& confinement, SteadyClock clock)
    : confinement_(confinement), clock_(std::move(clock)) {}

void ProgramRunner::run(const ProgramRun& run) const {
    // A converter behind its wall would only say that it failed.
    const RegularFile readable(run.original);
    std::exception_ptr launchError;
    for (const auto& program : run.programs) {
        try {
            const auto status = runOne(program, run);
            if (status.isSuccess())
                return;
            if (status.code != cannotExecute && status.code != notFound)
                throw FileFailure(converterFailure);
        } catch (const std::filesystem::filesystem_error&) {
            launchError = std::current_exception();
        }
    }
    if (launchError)
        std::rethrow_exception(launchError);
    throw FileFailure(converterFailure);
}

platform::ExitStatus ProgramRunner::runOne(const FileUrl& program, const ProgramRun& run) const {
    const platform::ProcessSpec spec{
        .executable = program, .arguments = run.arguments, .limits = limits, .niceness = niceness};
    platform::ChildProcess child(
        confinement_.confine(spec, {.readable = {run.original}, .writable = run.work->url(), .fonts = run.fonts}));
    const SteadyTime deadline = clock_() + timeLimit;
    while (!child.waitUntil(steadyNow() + pollInterval)) {
        if (clock_() < deadline)
            continue;
        platform::ProcessRegistry::endSoon(std::move(child), grace, [work = run.work] {});
        throw FileFailure("File conversion timed out.");
    }
    return child.wait();
}

} // namespace quillmere
