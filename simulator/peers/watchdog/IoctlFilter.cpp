#include "watchdog/IoctlFilter.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include <linux/audit.h>
#include <linux/seccomp.h>
#include <linux/watchdog.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace orvo::simulator
{

namespace
{
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the request is read as args[1]'s low half");
static_assert(WDIOC_GETTIMEOUT == 0x80045707 && WDIOC_KEEPALIVE == 0x80045705);

/// A way into the kernel and the number that ioctl has there.
struct SystemCallTable
{
    std::uint32_t architecture;
    std::uint32_t ioctlNumber;
};

constexpr std::array<SystemCallTable, 4> kSystemCallTables = {{
    {AUDIT_ARCH_X86_64, 16},
    {AUDIT_ARCH_I386, 54},
    {AUDIT_ARCH_ARM, 54},
    {AUDIT_ARCH_AARCH64, 29},
}};

constexpr std::uint32_t kNumberOffset = offsetof(seccomp_data, nr);
constexpr std::uint32_t kArchitectureOffset = offsetof(seccomp_data, arch);
constexpr std::uint32_t kRequestOffset = offsetof(seccomp_data, args) + sizeof(std::uint64_t);

sock_filter load(std::uint32_t offset)
{
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offset);
}

/// Skips ifEqual or ifDifferent instructions.
sock_filter compare(std::uint32_t value, std::size_t ifEqual, std::size_t ifDifferent)
{
    return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, static_cast<std::uint8_t>(ifEqual),
                    static_cast<std::uint8_t>(ifDifferent));
}

sock_filter answer(std::uint32_t action)
{
    return BPF_STMT(BPF_RET | BPF_K, action);
}
} // namespace

std::vector<sock_filter> watchdogIoctlFilter()
{
    constexpr std::size_t kTableLength = 3;
    std::vector<sock_filter> program = {load(kArchitectureOffset)};
    for (std::size_t index = 0; index < kSystemCallTables.size(); ++index)
    {
        const std::size_t pastTables = kTableLength * (kSystemCallTables.size() - index - 1);
        program.push_back(compare(kSystemCallTables[index].architecture, 0, kTableLength - 1));
        program.push_back(load(kNumberOffset));
        program.push_back(
            compare(kSystemCallTables[index].ioctlNumber, pastTables + 1, pastTables));
    }
    program.push_back(answer(SECCOMP_RET_ALLOW));
    program.push_back(load(kRequestOffset));
    program.push_back(compare(WDIOC_GETTIMEOUT, 2, 0));
    program.push_back(compare(WDIOC_KEEPALIVE, 1, 0));
    program.push_back(answer(SECCOMP_RET_ALLOW));
    program.push_back(answer(SECCOMP_RET_USER_NOTIF));
    return program;
}

Descriptor enterWatchdogIoctlFilter(const std::vector<sock_filter>& filter)
{
    const sock_fprog program = {static_cast<unsigned short>(filter.size()),
                                const_cast<sock_filter*>(filter.data())};
    // What an ordinary user must promise before he may filter.
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
    {
        return Descriptor();
    }
    // A signal that hits the program while its feed is being answered must not repeat the feed;
    // kernels before 5.19 cannot promise that.
    for (const unsigned long extra : {SECCOMP_FILTER_FLAG_WAIT_KILLABLE_RECV, 0UL})
    {
        const long listener = syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER,
                                      SECCOMP_FILTER_FLAG_NEW_LISTENER | extra, &program);
        if (listener >= 0)
        {
            return Descriptor(static_cast<int>(listener));
        }
    }
    return Descriptor();
}

} // namespace orvo::simulator
