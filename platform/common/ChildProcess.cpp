#include "platform/common/ChildProcess.h"

#include "base/Errors.h"
#include "platform/common/ProcessRegistry.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <utility>

namespace quillmere::platform {

namespace {

constexpr auto pollInterval = std::chrono::milliseconds(5);

[[noreturn]] void throwSystemError(int errorNumber, const char* what) {
    throw std::system_error(errorNumber, std::generic_category(), what);
}

std::vector<char*> pointersTo(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (auto& text : strings)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Processes and threads of this user. The kernel's limit counts all of them, so an allowance starts from here.
std::uint64_t tasksOfUser() {
    std::uint64_t tasks = 0;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().native();
        struct stat info{};
        if (name.empty() || name.front() < '0' || name.front() > '9' || ::stat(entry->path().c_str(), &info) != 0 ||
            info.st_uid != ::getuid())
            continue;
        // A task folder has one link for itself, one for its parent and one for each thread.
        const bool counted = ::stat((entry->path() / "task").c_str(), &info) == 0 && info.st_nlink > 2;
        tasks += counted ? info.st_nlink - 2 : 1;
    }
    return tasks;
}

struct Limit {
    __rlimit_resource resource;
    rlim_t value;
};

std::vector<Limit> kernelLimits(const ResourceLimits& limits) {
    std::vector<Limit> kernel{{RLIMIT_CORE, 0}};
    const auto add = [&](auto resource, const std::optional<std::uint64_t>& value) {
        if (value)
            kernel.push_back({resource, *value});
    };
    add(RLIMIT_AS, limits.addressSpace);
    add(RLIMIT_CPU, limits.cpuSeconds);
    add(RLIMIT_FSIZE, limits.fileSize);
    add(RLIMIT_NOFILE, limits.openFiles);
    if (limits.processes)
        kernel.push_back({RLIMIT_NPROC, tasksOfUser() + *limits.processes});
    return kernel;
}

/// Everything that the child needs between its birth and the new program, made before: the child shares our memory
/// then, so it allocates nothing and takes no lock.
struct Preparation {
    const char* executable;
    char* const* arguments;
    char* const* environment;
    const PassedDescriptor* descriptors;
    size_t descriptorCount;
    const Limit* limits;
    size_t limitCount;
    int niceness;
    const KernelFence* fence;
    int nullDevice;
    int firstFree; // above every number that the child knows a descriptor by
    int report;
    pid_t parent;
};

bool passDescriptors(const Preparation& preparation) {
    // All sources move out of the way first: the number of one may be the destination of another.
    int moved[16];
    for (size_t i = 0; i < preparation.descriptorCount; ++i) {
        moved[i] = ::fcntl(preparation.descriptors[i].ours, F_DUPFD_CLOEXEC, preparation.firstFree);
        if (moved[i] < 0)
            return false;
    }
    for (int stream = 0; stream < 3; ++stream)
        if (::dup2(preparation.nullDevice, stream) < 0)
            return false;
    ::syscall(SYS_close_range, 3U, ~0U, CLOSE_RANGE_CLOEXEC);
    for (size_t i = 0; i < preparation.descriptorCount; ++i)
        if (::dup2(moved[i], preparation.descriptors[i].theirs) < 0)
            return false;
    return true;
}

bool becomeReady(const Preparation& preparation) {
    ::setsid();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != preparation.parent)
        ::_exit(127); // the program ended in between
    if (!passDescriptors(preparation))
        return false;
    for (size_t i = 0; i < preparation.limitCount; ++i) {
        rlimit limit{};
        if (::getrlimit(preparation.limits[i].resource, &limit) != 0)
            return false;
        limit.rlim_max = std::min(limit.rlim_max, preparation.limits[i].value);
        limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max);
        if (::setrlimit(preparation.limits[i].resource, &limit) != 0)
            return false;
    }
    if (preparation.niceness != 0)
        ::setpriority(PRIO_PROCESS, 0, preparation.niceness);
    for (int number = 1; number < NSIG; ++number)
        ::signal(number, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    return !preparation.fence || enter(*preparation.fence);
}

[[noreturn]] void runChild(const Preparation& preparation) {
    if (becomeReady(preparation))
        ::execve(preparation.executable, preparation.arguments, preparation.environment);
    const int error = errno;
    // A pipe takes four bytes at once; nobody is left to hear of a failure to write them.
    [[maybe_unused]] const auto written = ::write(preparation.report, &error, sizeof error);
    ::_exit(127);
}

/// The new process, or 0 with errno set. Signals stay blocked until the child has its own handlers.
__attribute__((noinline)) pid_t startChild(const Preparation& preparation) {
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    // Only what vfork allows is done until the program starts: a fork would copy the page tables of the whole window.
    const pid_t process = ::vfork(); // NOLINT(bugprone-unsafe-functions,clang-analyzer-security.insecureAPI.vfork)
    if (process == 0)
        runChild(preparation); // NOLINT(clang-analyzer-unix.Vfork)
    const int error = errno;
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return process;
}

} // namespace

Pipe makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throwSystemError(errno, "pipe");
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

ChildProcess::ChildProcess(const ProcessSpec& spec) {
    std::vector<std::string> arguments{spec.executable.path()};
    arguments.insert(arguments.end(), spec.arguments.begin(), spec.arguments.end());
    auto environment = spec.environment.value_or(std::vector<std::string>{});
    const auto argumentPointers = pointersTo(arguments);
    const auto environmentPointers = pointersTo(environment);
    const auto limits = kernelLimits(spec.limits);
    const FileDescriptor nullDevice(::open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!nullDevice)
        throwFileError(errno, "/dev/null");
    Pipe report = makePipe();
    int firstFree = 10;
    for (const auto& passed : spec.descriptors)
        firstFree = std::max(firstFree, passed.theirs + 1);
    if (spec.descriptors.size() > 16)
        throwSystemError(EINVAL, "too many descriptors");
    // The report has to survive the child's own numbers.
    report.writeEnd.reset(::fcntl(report.writeEnd.get(), F_DUPFD_CLOEXEC, firstFree));
    if (!report.writeEnd)
        throwSystemError(errno, "pipe");
    const Preparation preparation{.executable = arguments.front().c_str(),
                                  .arguments = argumentPointers.data(),
                                  .environment = spec.environment ? environmentPointers.data() : ::environ,
                                  .descriptors = spec.descriptors.data(),
                                  .descriptorCount = spec.descriptors.size(),
                                  .limits = limits.data(),
                                  .limitCount = limits.size(),
                                  .niceness = spec.niceness,
                                  .fence = spec.fence ? &*spec.fence : nullptr,
                                  .nullDevice = nullDevice.get(),
                                  .firstFree = firstFree,
                                  .report = report.writeEnd.get(),
                                  .parent = ::getpid()};
    ProcessRegistry::runOnStarter([&] {
        process_ = startChild(preparation);
        if (process_ < 0)
            throwSystemError(errno, "fork");
        if (!ProcessRegistry::add(process_)) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
            throwSystemError(EAGAIN, "no more children");
        }
    });
    report.writeEnd.reset();
    int launchError = 0;
    ssize_t received = 0;
    do
        received = ::read(report.readEnd.get(), &launchError, sizeof launchError);
    while (received < 0 && errno == EINTR);
    if (received == sizeof launchError) {
        end();
        throwFileError(launchError, spec.executable.path());
    }
    handle_.reset(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0)));
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : process_(std::exchange(other.process_, -1)), handle_(std::move(other.handle_)), status_(other.status_) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this != &other) {
        end();
        process_ = std::exchange(other.process_, -1);
        handle_ = std::move(other.handle_);
        status_ = other.status_;
    }
    return *this;
}

ChildProcess::~ChildProcess() {
    end();
}

void ChildProcess::end() noexcept {
    kill();
    reap(0);
}

/// Takes the leader's status once it has ended. Its group is killed while the dead leader still holds the number, so
/// that the signal can reach no stranger.
bool ChildProcess::reap(int waitOptions) noexcept {
    if (process_ < 0)
        return true;
    siginfo_t info{};
    int result = 0;
    do
        result = ::waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOWAIT | waitOptions);
    while (result != 0 && errno == EINTR);
    if (result == 0 && info.si_pid == 0)
        return false;
    signalGroup(SIGKILL);
    ProcessRegistry::remove(process_);
    ::waitpid(process_, nullptr, 0);
    if (result != 0)
        status_ = ExitStatus{.code = 127}; // somebody else took the status
    else if (info.si_code == CLD_EXITED)
        status_ = ExitStatus{.code = info.si_status};
    else
        status_ = ExitStatus{.signal = info.si_status};
    process_ = -1;
    return true;
}

bool ChildProcess::isRunning() {
    return !reap(WNOHANG);
}

bool ChildProcess::waitUntil(SteadyTime deadline) {
    while (isRunning()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - steadyNow());
        if (left.count() <= 0)
            return false;
        if (!handle_) {
            std::this_thread::sleep_for(std::min(left, std::chrono::milliseconds(pollInterval)));
            continue;
        }
        pollfd ended{.fd = handle_.get(), .events = POLLIN, .revents = 0};
        ::poll(&ended, 1, static_cast<int>(std::min<long long>(left.count(), 60'000)));
    }
    return true;
}

ExitStatus ChildProcess::wait() {
    reap(0);
    return status_.value_or(ExitStatus{.code = 127});
}

std::optional<ExitStatus> ChildProcess::exitStatus() {
    isRunning();
    return status_;
}

void ChildProcess::signalGroup(int signalNumber) const noexcept {
    if (process_ > 0)
        ::kill(-process_, signalNumber);
}

void ChildProcess::terminate() noexcept {
    signalGroup(SIGTERM);
}

void ChildProcess::kill() noexcept {
    signalGroup(SIGKILL);
}

} // namespace quillmere::platform
