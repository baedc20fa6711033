#include "installer-host/run/SystemCallFilter.h"

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "installer-host/ExitStatus.h"

namespace host {

namespace {

/// Refused with EPERM, whatever the arguments. A name that this processor does not have is passed over.
constexpr const char* REFUSED_CALLS[] = {
    // what is mounted, and the root
    "mount", "umount", "umount2", "pivot_root", "chroot", "fsopen", "fsconfig", "fsmount", "fspick", "open_tree",
    "move_mount", "mount_setattr", "quotactl", "quotactl_fd", "swapon", "swapoff", "open_by_handle_at",
    "name_to_handle_at", "fanotify_init", "fanotify_mark",
    // other namespaces, other processes
    "unshare", "setns", "ptrace", "process_vm_readv", "process_vm_writev", "process_madvise", "process_mrelease",
    "kcmp", "pidfd_getfd",
    // deep in the kernel
    "bpf", "perf_event_open", "userfaultfd", "io_uring_setup", "io_uring_enter", "io_uring_register", "add_key",
    "request_key", "keyctl", "init_module", "finit_module", "delete_module", "create_module", "get_kernel_syms",
    "query_module", "kexec_load", "kexec_file_load", "lookup_dcookie", "nfsservctl", "_sysctl", "sysfs", "ustat",
    "uselib", "modify_ldt", "vm86", "vm86old", "iopl", "ioperm", "mbind", "move_pages", "migrate_pages",
    "set_mempolicy", "get_mempolicy", "memfd_secret",
    // memory that no limit of a process counts
    "memfd_create", "shmget", "shmat", "shmctl", "msgget", "mq_open",
    // the machine as a whole
    "reboot", "acct", "syslog", "vhangup", "sethostname", "setdomainname", "settimeofday", "stime", "clock_settime",
    "clock_settime64", "clock_adjtime", "clock_adjtime64", "adjtimex"};

/// Refused as what this machine does not have, so that nobody insists.
constexpr const char* UNKNOWN_SOCKET_CALLS[] = {"socket", "socketpair", "connect", "bind",
                                                "listen", "accept",     "accept4"};

constexpr unsigned NEW_NAMESPACE_FLAGS[] = {CLONE_NEWNS,   CLONE_NEWCGROUP, CLONE_NEWUTS, CLONE_NEWIPC,
                                            CLONE_NEWUSER, CLONE_NEWPID,    CLONE_NEWNET};

/// What types into a terminal.
constexpr unsigned long REFUSED_CONTROLS[] = {TIOCSTI, TIOCLINUX};

/// The first system call that Linux 5.17 does not have, and one that no Linux has: all processors share the numbers
/// from 424 on.
constexpr int FIRST_NEWER_CALL = 451;
constexpr int END_OF_NEWER_CALLS = 600;

[[noreturn]] void fail(int error) {
    throw Failure(ExitStatus::RootNotMade, "the filter of system calls cannot be made: " + cv::errorText(error));
}

class Filter {
public:
    Filter() : context_(seccomp_init(SCMP_ACT_ALLOW), seccomp_release) {
        if (context_ == nullptr) {
            fail(ENOMEM);
        }
        check(seccomp_attr_set(context_.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2));
    }

    void refuse(const char* call, int error) {
        const int number = seccomp_syscall_resolve_name(call);
        if (number != __NR_SCMP_ERROR) {
            refuse(number, error);
        }
    }

    /// Refuses the call when all comparisons of its arguments hold.
    void refuse(int call, int error, const std::vector<scmp_arg_cmp>& arguments = {}) {
        check(seccomp_rule_add_array(context_.get(), SCMP_ACT_ERRNO(code(error)), call,
                                     static_cast<unsigned>(arguments.size()), arguments.data()));
    }

    void writeTo(int fd) const { check(seccomp_export_bpf(context_.get(), fd)); }

private:
    static std::uint32_t code(int error) { return static_cast<std::uint32_t>(error); }

    static void check(int result) {
        if (result < 0) {
            fail(-result);
        }
    }

    std::unique_ptr<void, void (*)(scmp_filter_ctx)> context_;
};

/// All bits of `bits` are set in the call's argument with this index.
scmp_arg_cmp hasBits(unsigned index, unsigned bits) {
    return {index, SCMP_CMP_MASKED_EQ, bits, bits};
}

// Not libseccomp's macros for comparisons, which are C99 that clang refuses in C++.

/// Of the call's argument with this index, the bits of `mask` are `bits`.
scmp_arg_cmp isBits(unsigned index, scmp_datum_t mask, scmp_datum_t bits) {
    return {index, SCMP_CMP_MASKED_EQ, mask, bits};
}

/// What gives somebody else the rights of whoever runs this program: a file with one of these bits, and devices.
void refuseSpecialFiles(Filter& filter) {
    for (const unsigned bit : {unsigned{S_ISUID}, unsigned{S_ISGID}}) {
        filter.refuse(SCMP_SYS(chmod), EPERM, {hasBits(1, bit)});
        filter.refuse(SCMP_SYS(fchmod), EPERM, {hasBits(1, bit)});
        filter.refuse(SCMP_SYS(fchmodat), EPERM, {hasBits(2, bit)});
        filter.refuse(SCMP_SYS(creat), EPERM, {hasBits(1, bit)});
        filter.refuse(SCMP_SYS(mknod), EPERM, {hasBits(1, bit)});
        filter.refuse(SCMP_SYS(mknodat), EPERM, {hasBits(2, bit)});
        for (const unsigned flag : {unsigned{O_CREAT}, unsigned{O_TMPFILE & ~O_DIRECTORY}}) {
            filter.refuse(SCMP_SYS(open), EPERM, {hasBits(1, flag), hasBits(2, bit)});
            filter.refuse(SCMP_SYS(openat), EPERM, {hasBits(2, flag), hasBits(3, bit)});
        }
    }
    for (const unsigned device : {unsigned{S_IFCHR}, unsigned{S_IFBLK}}) {
        filter.refuse(SCMP_SYS(mknod), EPERM, {isBits(1, S_IFMT, device)});
        filter.refuse(SCMP_SYS(mknodat), EPERM, {isBits(2, S_IFMT, device)});
    }
}

void refuseByArguments(Filter& filter) {
    for (const unsigned flag : NEW_NAMESPACE_FLAGS) {
        filter.refuse(SCMP_SYS(clone), EPERM, {hasBits(0, flag)});
    }
    // The kernel looks at the lower half of the number alone, so only that may be compared.
    for (const unsigned long control : REFUSED_CONTROLS) {
        filter.refuse(SCMP_SYS(ioctl), EPERM, {isBits(1, 0xFFFFFFFFU, control)});
    }
    filter.refuse(SCMP_SYS(personality), EPERM, {scmp_arg_cmp{0, SCMP_CMP_NE, 0, 0}});
    refuseSpecialFiles(filter);
}

}  // namespace

cv::Descriptor systemCallFilter() {
    Filter filter;
    for (const char* call : REFUSED_CALLS) {
        filter.refuse(call, EPERM);
    }
    for (const char* call : UNKNOWN_SOCKET_CALLS) {
        filter.refuse(call, EAFNOSUPPORT);
    }
    // Their flags are in memory, where no filter sees them. The C library falls back to clone and openat.
    filter.refuse("clone3", ENOSYS);
    filter.refuse("openat2", ENOSYS);
    for (int call = FIRST_NEWER_CALL; call < END_OF_NEWER_CALLS; ++call) {
        filter.refuse(call, ENOSYS);
    }
    refuseByArguments(filter);
    cv::Descriptor file(memfd_create("installer-host-filter", MFD_CLOEXEC));
    if (!file.isOpen()) {
        fail(errno);
    }
    filter.writeTo(file.get());
    if (lseek(file.get(), 0, SEEK_SET) != 0) {
        fail(errno);
    }
    return file;
}

}  // namespace host
