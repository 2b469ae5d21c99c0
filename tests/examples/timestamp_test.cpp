#include "support/command.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

const std::string Timestamp = EXAMPLES_DIRECTORY "/timestamp";

struct Form {
    std::string text;
    std::string output;
};

const std::vector<Form> Forms = {
    {"06/15/2003 12:00:00", "1030615120000000 | 2003/06/15 12:00:00 000 | Sunday"},
    {"15/06/2003", "1030615000000000 | 2003/06/15 00:00:00 000 | Sunday"},
    {"2003/06/15", "1030615000000000 | 2003/06/15 00:00:00 000 | Sunday"},
    {"15\\06\\2003", "1030615000000000 | 2003/06/15 00:00:00 000 | Sunday"},
    {"6.15.2003", "1030615000000000 | 2003/06/15 00:00:00 000 | Sunday"},
    {"15.06.2003 10:20:30", "1030615102030000 | 2003/06/15 10:20:30 000 | Sunday"},
    {"JUN 15 2003", "1030615000000000 | 2003/06/15 00:00:00 000 | Sunday"},
    {"june 15, 2003", "1030615000000000 | 2003/06/15 00:00:00 000 | Sunday"},
    {"Monday June 16 2003 23:59:59", "1030616235959000 | 2003/06/16 23:59:59 000 | Monday"},
    {"15/JUN/2003", "1030615000000000 | 2003/06/15 00:00:00 000 | Sunday"},
    {"JUN/15/2003", "1030615000000000 | 2003/06/15 00:00:00 000 | Sunday"},
    {"2003/JUN/18", "1030618000000000 | 2003/06/18 00:00:00 000 | Wednesday"},
    {"2003/15/JUN", "1030600000000000 | 2003/06/00 00:00:00 000 | no weekday"}, // the day is lost
    {"JUN15 2003", "1030615000000000 | 2003/06/15 00:00:00 000 | Sunday"},
    {"15 JUN 2003",
     "0000600000000000 | 1900/06/00 00:00:00 000 | no weekday"}, // the day must follow its month
    {"2003.06.15",
     "0150006000000000 | 1915/00/06 00:00:00 000 | no weekday"}, // the year goes before the date is read
    {"10:20", "0000000000000000 | 1900/00/00 00:00:00 000 | no weekday"}, // one colon makes no clock time
    {"1:2:3:4", "0000000020304000 | 1900/00/00 02:03:04 000 | no weekday"},
    {"15/01/24", "0240115000000000 | 1924/01/15 00:00:00 000 | no weekday"},
    {"01/15/2024 10:20:30", "1240115102030000 | 2024/01/15 10:20:30 000 | no weekday"},
};

// The output for all forms.
std::string transcript()
{
    std::string lines;
    for (const Form &form : Forms) {
        lines += form.text + " | " + form.output + "\n";
    }
    return lines;
}

} // namespace

TEST(TimestampExample, PrintsTwentyFormsGivenAsArguments)
{
    ASSERT_EQ(Forms.size(), 20U);
    std::string command = Timestamp;
    for (const Form &form : Forms) {
        command += " '" + form.text + "'";
    }
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, transcript());
}

TEST(TimestampExample, PrintsTwentyFormsGivenAsLines)
{
    std::string command = Timestamp + " <<'END'\n";
    for (const Form &form : Forms) {
        command += form.text + "\n";
    }
    const Outcome outcome = run(command + "END");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, transcript());
}

TEST(TimestampExample, TakesAnEmptyText)
{
    const Outcome outcome = run(Timestamp + " ''");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, " | 0000000000000000 | 1900/00/00 00:00:00 000 | no weekday\n");
}
