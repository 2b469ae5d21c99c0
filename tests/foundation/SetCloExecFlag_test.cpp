#include "support/system_calls.h"
#include "support/trace_recorder.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char Function[] = "DOV0_SetCloExecFlag";

struct SetCloExecFlag : testing::Test {
    const int descriptor = open("/dev/null", O_RDONLY);

    void TearDown() override { close(descriptor); }

    std::string flagsRead(unsigned flags) const
    {
        return message(Function, "fcntl returned descFlags %X for fileDescriptor %d\n", flags, descriptor);
    }

    // Whether a program that the process starts finds the descriptor open.
    bool isInherited() const
    {
        const std::string test = "test -e /proc/self/fd/" + std::to_string(descriptor);
        const pid_t child = fork();
        if (child == 0) {
            execl("/bin/sh", "sh", "-c", test.c_str(), nullptr);
            _exit(2);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
};

std::string flagsSet(int rc, int error)
{
    return message(Function, "fcntl returned rc %d errno %d\n", rc, error);
}

std::string notRead(int fileDescriptor, int error)
{
    return message(Function, "*** fcntl for file descriptor %d failed, errno %d\n", fileDescriptor, error);
}

} // namespace

TEST_F(SetCloExecFlag, KeepsADescriptorFromProgramsThatAreStarted)
{
    ASSERT_TRUE(isInherited());
    EXPECT_EQ(DOV0_SetCloExecFlag(descriptor), 0);
    EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    EXPECT_FALSE(isInherited());
}

TEST_F(SetCloExecFlag, TracesWhatItReadsAndSets)
{
    TraceLog log;
    errno = 0;
    const SystemCalls calls = systemCallsOf(
        [&] { log = traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_SetCloExecFlag(descriptor), 0); }); });
    const std::string number = std::to_string(descriptor);
    EXPECT_EQ(calls, (SystemCalls{"fcntl " + number + " F_GETFD", "fcntl " + number + " F_SETFD 1"}));
    EXPECT_EQ(log, (TraceLog{entry(Function), flagsRead(0), flagsSet(0, 0), leave(Function, intptr_t{0})}));
    errno = 0;
    EXPECT_EQ(traceAt(Trace::All, [&] { EXPECT_EQ(DOV0_SetCloExecFlag(descriptor), 0); }),
              (TraceLog{entry(Function), flagsRead(1), flagsSet(0, 0), leave(Function, intptr_t{0})}));
}

TEST_F(SetCloExecFlag, AddsToTheFlagsThatAreThere)
{
    const SystemFault fault("F_GETFD", 0xA6);
    TraceLog log;
    const SystemCalls calls =
        systemCallsOf([&] { log = traceAt(Trace::Detail, [&] { DOV0_SetCloExecFlag(descriptor); }); });
    EXPECT_EQ(calls.at(1), "fcntl " + std::to_string(descriptor) + " F_SETFD " + std::to_string(0xA7));
    EXPECT_EQ(log.at(0),
              message(Function, "fcntl returned descFlags A6 for fileDescriptor %d\n", descriptor));
}

TEST_F(SetCloExecFlag, ShowsItsMessagesUnderTheDetailBit)
{
    const auto call = [&] {
        errno = 0;
        fcntl(descriptor, F_SETFD, 0);
        DOV0_SetCloExecFlag(descriptor);
    };
    EXPECT_EQ(bitsThatShow(flagsRead(0), call), Trace::Detail);
    EXPECT_EQ(bitsThatShow(flagsSet(0, 0), call), Trace::Detail);
    EXPECT_EQ(traceAt(Trace::All & ~(Trace::Detail | Trace::Flow), call), TraceLog{});
}

TEST_F(SetCloExecFlag, ReturnsZeroForADescriptorThatIsNotOpen)
{
    for (const int32_t closed : {-1, 1 << 30, INT32_MIN}) {
        int32_t rc = -1;
        EXPECT_EQ(traceAt(Trace::All, [&] { rc = DOV0_SetCloExecFlag(closed); }),
                  (TraceLog{entry(Function), notRead(closed, EBADF), leave(Function, intptr_t{0})}));
        EXPECT_EQ(rc, 0);
    }
    const int once = dup(descriptor);
    close(once);
    EXPECT_EQ(bitsThatShow(notRead(once, EBADF), [&] { EXPECT_EQ(DOV0_SetCloExecFlag(once), 0); }),
              Trace::Error);
}

TEST_F(SetCloExecFlag, ReturnsTheResultOfAFailedSetting)
{
    const SystemFault fault("F_SETFD", -1, EPERM);
    EXPECT_EQ(traceAt(Trace::All,
                      [&] {
                          EXPECT_EQ(DOV0_SetCloExecFlag(descriptor), -1);
                          EXPECT_EQ(errno, EPERM);
                      }),
              (TraceLog{entry(Function), flagsRead(0), flagsSet(-1, EPERM), leave(Function, -1)}));
}
