#include "watchdog/IoctlFilter.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <linux/audit.h>
#include <linux/seccomp.h>

namespace orvo::test
{

namespace
{
constexpr std::uint32_t kGetTimeout = 0x80045707;
constexpr std::uint32_t kKeepAlive = 0x80045705;

/// What the kernel would answer a system call with; only the instructions that the filter uses.
std::uint32_t judge(const seccomp_data& call)
{
    const std::vector<sock_filter> program = simulator::watchdogIoctlFilter();
    std::uint32_t accumulator = 0;
    for (std::size_t position = 0; position < program.size(); ++position)
    {
        const sock_filter& step = program[position];
        switch (step.code)
        {
        case BPF_LD | BPF_W | BPF_ABS:
            std::memcpy(&accumulator, reinterpret_cast<const char*>(&call) + step.k,
                        sizeof accumulator);
            break;
        case BPF_JMP | BPF_JEQ | BPF_K:
            position += accumulator == step.k ? step.jt : step.jf;
            break;
        case BPF_RET | BPF_K:
            return step.k;
        default:
            ADD_FAILURE() << "instruction " << step.code;
            return 0;
        }
    }
    ADD_FAILURE() << "the program has no end";
    return 0;
}

std::uint32_t judgeIoctl(std::uint32_t architecture, int number, std::uint64_t request)
{
    seccomp_data call{};
    call.arch = architecture;
    call.nr = number;
    call.args[1] = request;
    return judge(call);
}
} // namespace

struct ArchitectureRow
{
    const char* name;
    std::uint32_t architecture;
    int ioctlNumber;
    int otherIoctlNumber;
};

void PrintTo(const ArchitectureRow& row, std::ostream* stream)
{
    *stream << row.name;
}

class IoctlFilter : public testing::TestWithParam<ArchitectureRow>
{
};

TEST_P(IoctlFilter, StopsTheTwoRequestsOfTheWatchdog)
{
    const auto& [name, architecture, number, other] = GetParam();
    EXPECT_EQ(SECCOMP_RET_USER_NOTIF, judgeIoctl(architecture, number, kGetTimeout));
    EXPECT_EQ(SECCOMP_RET_USER_NOTIF, judgeIoctl(architecture, number, kKeepAlive));
}

TEST_P(IoctlFilter, LooksAtTheLowHalfOfTheRequestAsTheKernelDoes)
{
    const auto& [name, architecture, number, other] = GetParam();
    constexpr std::uint64_t kSignExtended = 0xffffffff00000000;
    EXPECT_EQ(SECCOMP_RET_USER_NOTIF, judgeIoctl(architecture, number, kSignExtended | kKeepAlive));
}

TEST_P(IoctlFilter, LetsEverythingElsePass)
{
    const auto& [name, architecture, number, other] = GetParam();
    for (const std::uint32_t request : {0U, 0x5401U, kKeepAlive - 1, kKeepAlive + 1,
                                        kGetTimeout - 1, kGetTimeout + 1, 0xc0045706U})
    {
        EXPECT_EQ(SECCOMP_RET_ALLOW, judgeIoctl(architecture, number, request)) << request;
    }
    EXPECT_EQ(SECCOMP_RET_ALLOW, judgeIoctl(architecture, number + 1, kKeepAlive));
    EXPECT_EQ(SECCOMP_RET_ALLOW, judgeIoctl(architecture, other, kKeepAlive))
        << "the number that ioctl has elsewhere";
}

INSTANTIATE_TEST_SUITE_P(Architectures, IoctlFilter,
                         testing::Values(ArchitectureRow{"X86In64Bits", AUDIT_ARCH_X86_64, 16, 54},
                                         ArchitectureRow{"X86In32Bits", AUDIT_ARCH_I386, 54, 16},
                                         ArchitectureRow{"ArmIn32Bits", AUDIT_ARCH_ARM, 54, 29},
                                         ArchitectureRow{"ArmIn64Bits", AUDIT_ARCH_AARCH64, 29,
                                                         54}),
                         [](const auto& row) { return row.param.name; });

TEST_F(IoctlFilter, LetsAnUnknownArchitecturePass)
{
    EXPECT_EQ(SECCOMP_RET_ALLOW, judgeIoctl(AUDIT_ARCH_S390X, 54, kKeepAlive));
}

TEST_F(IoctlFilter, LetsTheNumbersOfThe32BitFormOfX86In64BitsPass)
{
    constexpr int kX32Bit = 0x40000000;
    EXPECT_EQ(SECCOMP_RET_ALLOW, judgeIoctl(AUDIT_ARCH_X86_64, kX32Bit | 514, kKeepAlive));
}

} // namespace orvo::test
