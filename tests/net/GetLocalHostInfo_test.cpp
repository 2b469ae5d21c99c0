#include "net/resolver_stand_ins.h"
#include "support/guarded_buffer.h"
#include "support/trace_recorder.h"

#include <cerrno>

namespace {

constexpr char Function[] = "DOV0_GetLocalHostInfo";

void setField(char (&field)[65], const std::string &text)
{
    std::memset(field, 'z', sizeof field);
    std::memcpy(field, text.c_str(), std::min(text.size() + 1, sizeof field));
}

void setSystem(const std::string &systemName)
{
    standIns().systemNames = [systemName](utsname *names) {
        setField(names->sysname, systemName);
        setField(names->nodename, "alpha");
        setField(names->release, "6.1.0");
        setField(names->version, "#1 SMP");
        setField(names->machine, "ppc");
        return 0;
    };
}

} // namespace

TEST(GetLocalHostInfo, CopiesTheSystemNameWithoutATerminator)
{
    setSystem("Linux");
    GuardedBuffer out(17, '#');
    EXPECT_EQ(DOV0_GetLocalHostInfo(out.text()), 1);
    EXPECT_EQ(std::string(out.text(), 17), "Linux############");
}

TEST(GetLocalHostInfo, CopiesSixteenBytesAtMost)
{
    for (const size_t length : {0U, 15U, 16U, 17U, 65U}) {
        setSystem(std::string(length, 's'));
        GuardedBuffer out(DOV0_HOST_INFO_SIZE, 0);
        EXPECT_EQ(DOV0_GetLocalHostInfo(out.text()), 1);
        EXPECT_EQ(std::string(out.text()), std::string(std::min<size_t>(length, 16), 's'));
    }
}

TEST(GetLocalHostInfo, TracesAllFiveFieldsUnderTheDetailBit)
{
    setSystem("Linux");
    char out[17] = "";
    EXPECT_EQ(traceAt(Trace::All, [&] { DOV0_GetLocalHostInfo(out); }),
              (TraceLog{entry(Function), message(Function, "utsName.sysname  [Linux]\n"),
                        message(Function, "utsName.nodename [alpha]\n"),
                        message(Function, "utsName.release  [6.1.0]\n"),
                        message(Function, "utsName.version  [#1 SMP]\n"),
                        message(Function, "utsName.machine  [ppc]\n"), leave(Function, 1)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Detail, [&] { DOV0_GetLocalHostInfo(out); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
    setSystem(std::string(65, 's'));
    EXPECT_EQ(traceAt(Trace::Detail, [&] { DOV0_GetLocalHostInfo(out); }).front(),
              message(Function, "utsName.sysname  [%s]\n", std::string(65, 's').c_str()));
}

TEST(GetLocalHostInfo, ReportsAFailureAndAnswersOneAllTheSame)
{
    standIns().systemNames = [](utsname *) {
        errno = EFAULT;
        return -1;
    };
    char out[17] = "kept";
    int32_t result = 0;
    EXPECT_EQ(traceAt(Trace::All, [&] { result = DOV0_GetLocalHostInfo(out); }),
              (TraceLog{entry(Function), message(Function, "uname failed, errno %d\n", EFAULT),
                        leave(Function, 1)}));
    EXPECT_EQ(result, 1);
    EXPECT_STREQ(out, "kept");
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Error, [&] { DOV0_GetLocalHostInfo(out); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
}

TEST(GetLocalHostInfo, ReportsNull)
{
    EXPECT_EQ(traceAt(Trace::All, [] { DOV0_GetLocalHostInfo(nullptr); }),
              (TraceLog{entry(Function), message(Function, "*****Error: No area for the system name\n"),
                        leave(Function, 1)}));
    EXPECT_EQ(traceAt(Trace::All & ~Trace::Error, [] { DOV0_GetLocalHostInfo(nullptr); }),
              (TraceLog{entry(Function), leave(Function, 1)}));
}
