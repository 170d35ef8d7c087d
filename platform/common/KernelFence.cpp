#include "platform/common/KernelFence.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace quillmere::platform {

namespace {

[[noreturn]] void throwFilterError(int errorNumber) {
    throw std::system_error(errorNumber, std::generic_category(), "system call filter");
}

struct FilterRelease {
    void operator()(void* filter) const { seccomp_release(filter); }
};

/// Ways to other processes, to more of the kernel, or around this filter.
constexpr std::array refusedCalls{
    SCMP_SYS(connect),    SCMP_SYS(ptrace),          SCMP_SYS(process_vm_readv), SCMP_SYS(process_vm_writev),
    SCMP_SYS(kcmp),       SCMP_SYS(pidfd_getfd),     SCMP_SYS(io_uring_setup),   SCMP_SYS(bpf),
    SCMP_SYS(keyctl),     SCMP_SYS(perf_event_open), SCMP_SYS(userfaultfd),      SCMP_SYS(unshare),
    SCMP_SYS(setns),      SCMP_SYS(add_key),         SCMP_SYS(request_key),      SCMP_SYS(open_by_handle_at),
    SCMP_SYS(init_module)};

class CallFilter {
public:
    CallFilter() : filter_(seccomp_init(SCMP_ACT_ALLOW)) {
        if (!filter_)
            throwFilterError(ENOMEM);
        for (const int call : refusedCalls)
            refuse(call);
        refuseSockets();
        // With its arguments in memory this one cannot be judged; the library takes the older call then.
        add(SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3));
        refuse(SCMP_SYS(clone),
               scmp_arg_cmp{.arg = 0, .op = SCMP_CMP_MASKED_EQ, .datum_a = CLONE_NEWUSER, .datum_b = CLONE_NEWUSER});
    }

    std::vector<sock_filter> program() const {
        const FileDescriptor file(::memfd_create("filter", MFD_CLOEXEC));
        struct stat info{};
        if (!file || seccomp_export_bpf(filter_.get(), file.get()) != 0 || ::fstat(file.get(), &info) != 0)
            throwFilterError(EIO);
        std::vector<sock_filter> instructions(static_cast<size_t>(info.st_size) / sizeof(sock_filter));
        const size_t bytes = instructions.size() * sizeof(sock_filter);
        if (::pread(file.get(), instructions.data(), bytes, 0) != static_cast<ssize_t>(bytes))
            throwFilterError(EIO);
        return instructions;
    }

private:
    template <typename... Condition>
    void add(uint32_t action, int call, const Condition&... condition) {
        const std::array<scmp_arg_cmp, sizeof...(Condition)> conditions{condition...};
        if (seccomp_rule_add_array(filter_.get(), action, call, conditions.size(), conditions.data()) != 0)
            throwFilterError(EINVAL);
    }
    template <typename... Condition>
    void refuse(int call, const Condition&... condition) {
        add(SCMP_ACT_ERRNO(EACCES), call, condition...);
    }

    /// LibreOffice wants to listen on a socket of its own; nobody may be spoken to from there.
    void refuseSockets() {
        const auto argument = [](unsigned number, scmp_compare compare, uint64_t a, uint64_t b = 0) {
            return scmp_arg_cmp{.arg = number, .op = compare, .datum_a = a, .datum_b = b};
        };
        constexpr uint64_t typeMask = 0xf;
        refuse(SCMP_SYS(socket), argument(0, SCMP_CMP_NE, AF_UNIX));
        for (const uint64_t type : {SOCK_DGRAM, SOCK_RAW, SOCK_RDM, SOCK_SEQPACKET, SOCK_DCCP, SOCK_PACKET})
            refuse(SCMP_SYS(socket), argument(1, SCMP_CMP_MASKED_EQ, typeMask, type));
        refuse(SCMP_SYS(sendto), argument(4, SCMP_CMP_NE, 0));
    }

    std::unique_ptr<void, FilterRelease> filter_;
};

// The rules of paths, as newer kernels know them; the headers here may be older.
struct RulesetAttributes {
    uint64_t paths = 0;
    uint64_t network = 0;
    uint64_t scopes = 0;
};
constexpr uint64_t tcpBindAndConnect = 3;
constexpr uint64_t abstractSocketsAndSignals = 3;

constexpr uint64_t readRights = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr uint64_t firstRights = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;
constexpr uint64_t truncateRight = 1ULL << 14;
/// What may be done with a file; other rights are those of folders.
constexpr uint64_t fileRights =
    LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | truncateRight;

class PathRules {
public:
    /// What every program needs beside its own files.
    static constexpr std::array devices{"/dev/null", "/dev/zero", "/dev/full"};
    static constexpr std::array facts{"/proc", "/sys/devices/system/cpu", "/dev/urandom", "/dev/random"};

    PathRules() {
        const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
        if (version < 1)
            return;
        RulesetAttributes attributes{.paths = firstRights};
        size_t size = sizeof attributes.paths;
        if (version >= 2)
            attributes.paths |= LANDLOCK_ACCESS_FS_REFER;
        if (version >= 3)
            attributes.paths |= truncateRight;
        if (version >= 4) {
            attributes.network = tcpBindAndConnect;
            size = offsetof(RulesetAttributes, scopes);
        }
        if (version >= 6) {
            attributes.scopes = abstractSocketsAndSignals;
            size = sizeof attributes;
        }
        handled_ = attributes.paths;
        rules_.reset(static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, size, 0)));
    }

    void allow(const FileUrl& path, uint64_t rights) const {
        const FileDescriptor opened(::open(path.path().c_str(), O_PATH | O_CLOEXEC));
        struct stat info{};
        if (!rules_ || !opened || ::fstat(opened.get(), &info) != 0)
            return;
        rights &= handled_;
        landlock_path_beneath_attr rule{};
        rule.allowed_access = S_ISDIR(info.st_mode) ? rights : rights & fileRights;
        rule.parent_fd = opened.get();
        ::syscall(SYS_landlock_add_rule, rules_.get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    }

    std::shared_ptr<const FileDescriptor> take() {
        return rules_ ? std::make_shared<const FileDescriptor>(std::move(rules_)) : nullptr;
    }

private:
    uint64_t handled_ = 0;
    FileDescriptor rules_;
};

} // namespace

KernelFence makeKernelFence(const FencePaths& paths) {
    PathRules rules;
    for (const char* device : PathRules::devices)
        rules.allow(FileUrl(device), LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE);
    for (const char* fact : PathRules::facts)
        rules.allow(FileUrl(fact), LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR);
    // LibreOffice runs only when it can listen there, and remove its socket before it starts itself anew.
    rules.allow(FileUrl("/tmp"), LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_REMOVE_FILE);
    for (const auto& path : paths.readable)
        rules.allow(path, readRights);
    if (paths.writable)
        rules.allow(*paths.writable, ~uint64_t{0});
    return {.calls = std::make_shared<const std::vector<sock_filter>>(CallFilter().program()), .paths = rules.take()};
}

bool enter(const KernelFence& fence) noexcept {
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return false;
    if (fence.paths && ::syscall(SYS_landlock_restrict_self, fence.paths->get(), 0) != 0)
        return false;
    sock_fprog program{};
    program.len = static_cast<unsigned short>(fence.calls->size());
    program.filter = const_cast<sock_filter*>(fence.calls->data());
    return ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0;
}

} // namespace quillmere::platform
