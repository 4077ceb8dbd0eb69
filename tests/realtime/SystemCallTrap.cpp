#include "realtime/SystemCallTrap.h"

#if defined(__x86_64__) && defined(__linux__)
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#endif

namespace tindle::test
{

#if defined(__x86_64__) && defined(__linux__)
namespace
{
std::atomic<int> trapped{0};
std::atomic<int> lastCall{-1};
std::atomic<bool> counting{false};

void onSystemCall(int, siginfo_t* info, void* context)
{
    if (counting.load())
    {
        trapped.fetch_add(1);
        lastCall.store(info->si_syscall);
    }
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RAX] = -ENOSYS;
}
} // namespace

bool trapSystemCalls()
{
    struct sigaction action
    {
    };
    action.sa_sigaction = onSystemCall;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    if (sigaction(SIGSYS, &action, nullptr) != 0)
        return false;

    // What a thread needs to end and to be joined, and the return from the trap's own handler.
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_X86_64, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_rt_sigreturn, 6, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit, 5, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 4, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_futex, 3, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_munmap, 2, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_madvise, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog filter{static_cast<unsigned short>(sizeof(program) / sizeof(program[0])), program};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

int trappedSystemCalls()
{
    return trapped.load();
}

int lastTrappedSystemCall()
{
    return lastCall.load();
}

void countSystemCalls(bool on)
{
    counting.store(on);
}
#else
bool trapSystemCalls()
{
    return false;
}
int trappedSystemCalls()
{
    return 0;
}
int lastTrappedSystemCall()
{
    return -1;
}
void countSystemCalls(bool) {}
#endif

} // namespace tindle::test
