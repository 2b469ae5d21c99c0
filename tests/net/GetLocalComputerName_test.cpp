#include "net/resolver_stand_ins.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <cerrno>

namespace {

constexpr char Function[] = "DOV0_GetLocalComputerName";

void setNodeName(const std::string &name)
{
    standIns().systemNames = [name](utsname *names) {
        std::memset(names, 'z', sizeof *names); // a field that is full runs into the next one
        std::memcpy(names->nodename, name.c_str(), std::min(name.size() + 1, sizeof names->nodename));
        return 0;
    };
}

} // namespace

TEST(GetLocalComputerName, CopiesTheNodeNameWithoutATerminator)
{
    setNodeName("alpha.corp.example");
    GuardedBuffer out(66, '#');
    EXPECT_EQ(DOV0_GetLocalComputerName(out.text()), 1);
    EXPECT_EQ(std::string(out.text(), 66), "alpha.corp.example" + std::string(48, '#'));
}

TEST(GetLocalComputerName, FitsTheAreaOfItsConstant)
{
    for (const size_t length : {0U, 1U, 64U, 65U}) {
        setNodeName(std::string(length, 'n'));
        GuardedBuffer out(DOV0_COMPUTER_NAME_SIZE, 0);
        EXPECT_EQ(DOV0_GetLocalComputerName(out.text()), 1);
        EXPECT_EQ(std::string(out.text()), std::string(length, 'n'));
    }
}

TEST(GetLocalComputerName, TracesTheNameUnderTheDetailBit)
{
    setNodeName("alpha");
    char out[66] = "";
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_GetLocalComputerName(out); }),
              (TraceLog{entry(Function), message(Function, "uname returned utsName.nodename [alpha]\n"),
                        leave(Function, 1)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, [&] { DOV0_GetLocalComputerName(out); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
    setNodeName(std::string(65, 'n'));
    EXPECT_EQ(traceAt(Trace::Detail, [&] { DOV0_GetLocalComputerName(out); }),
              (TraceLog{message(Function, "uname returned utsName.nodename [%s]\n",
                                std::string(65, 'n').c_str())}));
}

TEST(GetLocalComputerName, ReportsAFailureAndAnswersOneAllTheSame)
{
    standIns().systemNames = [](utsname *) {
        errno = EFAULT;
        return -1;
    };
    char out[66] = "kept";
    int32_t result = 0;
    EXPECT_EQ(traceAt(Trace::All, [&] { result = DOV0_GetLocalComputerName(out); }),
              (TraceLog{entry(Function), message(Function, "uname failed, errno %d\n", EFAULT),
                        leave(Function, 1)}));
    EXPECT_EQ(result, 1);
    EXPECT_STREQ(out, "kept");
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Error, [&] { DOV0_GetLocalComputerName(out); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
}

TEST(GetLocalComputerName, ReportsNull)
{
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_GetLocalComputerName(nullptr); }),
              (TraceLog{entry(Function), message(Function, "*****Error: No area for the computer name\n"),
                        leave(Function, 1)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Error, [] { DOV0_GetLocalComputerName(nullptr); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
}
