#include "helpers/archive-reader/Lockdown.h"

#include "base/FileDescriptor.h"
#include "base/Sanitizers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <initializer_list>
#include <linux/futex.h>
#include <memory>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace quillmere {

namespace {

/// Dictionaries of real archives stay well below this.
constexpr rlim_t memoryBytes = rlim_t{1} << 30;
/// The reading time is watched from outside; this is for the case that nobody watches any more.
constexpr rlim_t processorSeconds = 60;

bool limit(__rlimit_resource resource, rlim_t value) {
    rlimit now{};
    if (getrlimit(resource, &now) != 0)
        return false;
    now.rlim_max = std::min(now.rlim_max, value);
    now.rlim_cur = std::min(now.rlim_cur, now.rlim_max);
    return setrlimit(resource, &now) == 0;
}

bool limitResources() {
    return (isSanitized || limit(RLIMIT_AS, memoryBytes)) && limit(RLIMIT_CORE, 0) && limit(RLIMIT_FSIZE, 0) &&
           limit(RLIMIT_CPU, processorSeconds);
}

struct FilterRelease {
    void operator()(void* filter) const { seccomp_release(filter); }
};

/// The request, memory, the open descriptors, time, and the end.
constexpr std::array allowedCalls{SCMP_SYS(recvmsg),
                                  SCMP_SYS(setitimer),
                                  SCMP_SYS(pread64),
                                  SCMP_SYS(read),
                                  SCMP_SYS(write),
                                  SCMP_SYS(lseek),
                                  SCMP_SYS(_llseek),
                                  SCMP_SYS(close),
                                  SCMP_SYS(brk),
                                  SCMP_SYS(munmap),
                                  SCMP_SYS(mremap),
                                  SCMP_SYS(madvise),
                                  SCMP_SYS(sched_yield),
                                  SCMP_SYS(clock_gettime),
                                  SCMP_SYS(clock_gettime64),
                                  SCMP_SYS(clock_nanosleep),
                                  SCMP_SYS(gettimeofday),
                                  SCMP_SYS(time),
                                  SCMP_SYS(getrandom),
                                  SCMP_SYS(getpid),
                                  SCMP_SYS(gettid),
                                  SCMP_SYS(sched_getaffinity),
                                  SCMP_SYS(rt_sigaction),
                                  SCMP_SYS(rt_sigprocmask),
                                  SCMP_SYS(rt_sigreturn),
                                  SCMP_SYS(sigaltstack),
                                  SCMP_SYS(restart_syscall),
                                  SCMP_SYS(rseq),
                                  SCMP_SYS(set_robust_list),
                                  SCMP_SYS(exit),
                                  SCMP_SYS(exit_group)};

/// Adds a call whose argument must be so.
bool allowIf(void* filter, int call, const scmp_arg_cmp& argument) {
    return seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, 1, &argument) == 0;
}

/// Waiting and waking are what locks need; the rarer operations have been the way into many a kernel.
bool allowLocks(void* filter) {
    for (const int call : {SCMP_SYS(futex), SCMP_SYS(futex_time64)})
        for (const auto operation :
             std::initializer_list<scmp_datum_t>{FUTEX_WAIT, FUTEX_WAKE, FUTEX_WAIT_BITSET, FUTEX_WAKE_BITSET})
            if (!allowIf(filter, call,
                         {.arg = 1,
                          .op = SCMP_CMP_MASKED_EQ,
                          .datum_a = static_cast<uint32_t>(FUTEX_CMD_MASK),
                          .datum_b = operation}))
                return false;
    return true;
}

bool filterCalls() {
    const std::unique_ptr<void, FilterRelease> filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)));
    if (!filter || seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1) != 0)
        return false;
    for (const int call : allowedCalls)
        if (seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0) != 0)
            return false;
    // Memory may be had as long as it cannot be executed.
    const scmp_arg_cmp notExecutable{.arg = 2, .op = SCMP_CMP_MASKED_EQ, .datum_a = PROT_EXEC, .datum_b = 0};
    for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)})
        if (!allowIf(filter.get(), call, notExecutable))
            return false;
    return allowLocks(filter.get()) && seccomp_load(filter.get()) == 0;
}

} // namespace

void beFirstToGo() {
    const FileDescriptor score(::open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    // Where the system does not ask, the limit on memory has to do.
    [[maybe_unused]] const bool isWritten = score && writeAll(score.get(), "1000");
}

bool lockDown() {
    return prctl(PR_SET_DUMPABLE, 0) == 0 && limitResources() && filterCalls();
}

} // namespace quillmere
