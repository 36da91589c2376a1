// The last step into a device's tree, taken inside of the tool's own process, when the host's loader has
// mapped every library and before the tool begins. Until here the process has seen an empty root.

#include "Entrance.h"

#include <array>
#include <cstddef>
#include <cstring>

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

#if defined(__x86_64__)
constexpr unsigned architecture = AUDIT_ARCH_X86_64;
// Numbers from here on are those of a second set of calls, which nothing here uses.
constexpr unsigned firstForeignCall = 0x40000000;
#elif defined(__aarch64__)
constexpr unsigned architecture = AUDIT_ARCH_AARCH64;
constexpr unsigned firstForeignCall = 0x40000000;
#else
#error "Add the name that the kernel's audit gives to this processor."
#endif

[[noreturn]] void fail(const char* reason) {
    static_cast<void>(::write(STDERR_FILENO, reason, std::strlen(reason)) + 1);
    ::_exit(notEnteredStatus);
}

constexpr sock_filter statement(unsigned code, unsigned value) {
    return {static_cast<unsigned short>(code), 0, 0, value};
}

constexpr sock_filter jump(unsigned code, unsigned value, unsigned ifTrue, unsigned ifFalse) {
    return {static_cast<unsigned short>(code), static_cast<unsigned char>(ifTrue),
            static_cast<unsigned char>(ifFalse), value};
}

constexpr unsigned loadWord = BPF_LD | BPF_W | BPF_ABS;
constexpr unsigned jumpIfEqual = BPF_JMP | BPF_JEQ | BPF_K;
constexpr unsigned jumpIfAtLeast = BPF_JMP | BPF_JGE | BPF_K;
constexpr unsigned jumpIfSet = BPF_JMP | BPF_JSET | BPF_K;
constexpr unsigned give = BPF_RET | BPF_K;

/// From here on the process runs no other program and maps no other code: what lies in the tree stays data,
/// also for a name service or a conversion module that the tool would load later.
void forbidForeignCode() {
    std::array filter = {
        statement(loadWord, offsetof(seccomp_data, arch)),
        jump(jumpIfEqual, architecture, 0, 9),
        statement(loadWord, offsetof(seccomp_data, nr)),
        jump(jumpIfAtLeast, firstForeignCall, 7, 0),
        jump(jumpIfEqual, SYS_execve, 6, 0),
        jump(jumpIfEqual, SYS_execveat, 5, 0),
        jump(jumpIfEqual, SYS_mmap, 2, 0),
        jump(jumpIfEqual, SYS_mprotect, 1, 0),
        jump(jumpIfEqual, SYS_pkey_mprotect, 0, 3),
        statement(loadWord, offsetof(seccomp_data, args[2])),
        jump(jumpIfSet, PROT_EXEC, 0, 1),
        statement(give, SECCOMP_RET_ERRNO | 1U /* EPERM */),
        statement(give, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{.len = filter.size(), .filter = filter.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) != 0) {
        fail("ozenter: the kernel does not filter system calls\n");
    }
}

[[gnu::constructor]] void enter() {
    if (::fchdir(rootDescriptor) != 0 || ::chroot(".") != 0 || ::fchdir(currentDirectoryDescriptor) != 0) {
        fail("ozenter: the device's tree cannot be entered\n");
    }
    if (::syscall(SYS_close_range, rootDescriptor, ~0U, 0) != 0) {
        ::close(rootDescriptor);
        ::close(currentDirectoryDescriptor);
    }
    forbidForeignCode();
}

} // namespace
