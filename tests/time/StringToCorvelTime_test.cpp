#include "support/clock.h"
#include "support/guarded_buffer.h"
#include "support/heap_faults.h"
#include "support/trace_recorder.h"
#include "time/free_form_model.h"

#include <algorithm>
#include <random>

namespace {

constexpr char Function[] = "DOV0_StringToCorvelTime";

// The clock of these tests stands in this year.
constexpr int CurrentYear = 2031;

void stopInCurrentYear()
{
    setTimeZone("UTC0");
    stopClock(utc(CurrentYear, 7, 4, 1, 2, 3));
}

std::string timestampOf(const std::string &text)
{
    stopInCurrentYear();
    GuardedBuffer input(text);
    char *timestamp = DOV0_StringToCorvelTime(input.text());
    EXPECT_EQ(std::string(input.text(), input.size() - 1), text) << "the input is not changed";
    const std::string result = timestamp != nullptr ? timestamp : "(null)";
    DOV0_FreeStorage(&timestamp);
    return result;
}

// Compares result and trace of one text with the model.
void compareWithModel(const std::string &text)
{
    stopInCurrentYear();
    const FreeFormModel model(text, CurrentYear - 1900);
    char *timestamp = nullptr;
    const TraceLog log =
        traceOf(Function, Trace::All, [&] { timestamp = DOV0_StringToCorvelTime(text.c_str()); });
    ASSERT_NE(timestamp, nullptr);
    TraceLog expected = model.messages;
    expected.insert(expected.begin(), entry(Function));
    expected.push_back(leave(Function, timestamp));
    ASSERT_EQ(timestamp, model.result) << "[" << text << "]";
    ASSERT_EQ(log, expected) << "[" << text << "]";
    DOV0_FreeStorage(&timestamp);
}

// What the function itself traces for a text, up to its exit.
TraceLog ownTraceOf(const char *text)
{
    char *timestamp = nullptr;
    TraceLog log = traceOf(Function, Trace::All, [&] { timestamp = DOV0_StringToCorvelTime(text); });
    EXPECT_EQ(log.back(), leave(Function, timestamp));
    log.pop_back();
    DOV0_FreeStorage(&timestamp);
    return log;
}

struct Case {
    const char *text;
    const char *timestamp;
};

} // namespace

TEST(StringToCorvelTime, ReadsNumericDates)
{
    for (const Case &c : {
             Case{"01/15/2024 10:20:30", "1240115102030000"},
             Case{"15/01/24", "0240115000000000"},
             Case{"15/01/2024", "1240115000000000"},
             Case{"2024/01/15", "1240115000000000"},
             Case{"1/2/3", "0030102000000000"},
             Case{"12/12/12", "0121212000000000"},
             Case{"13/12/12", "0121213000000000"},
             Case{"90/1/2", "0020190000000000"},
             Case{"91/1/2", "0910102000000000"},
             Case{"15\\01\\2024", "1240115000000000"},
             Case{"1.15.2024", "1240115000000000"},
             Case{"15.1.124", "1240115000000000"},
             Case{"1/15/1900", "19000115000000000"}, // a year of 1900 or less stands as it is
             Case{"1/15/1901", "0010115000000000"},
             Case{"   01/15/2024", "1240115000000000"},
             Case{"10:20:30 01/15/2024", "1240115102030000"},
             Case{"01/15/2024/7", "0000000000000000"}, // three slashes
             Case{"01/15", "0000000000000000"},
         }) {
        EXPECT_EQ(timestampOf(c.text), c.timestamp) << c.text;
    }
}

TEST(StringToCorvelTime, ReadsAMonthNameInANumericDate)
{
    for (const Case &c : {
             Case{"JAN/15/2024", "1240115000000000"}, Case{"15/jan/2024", "1240115000000000"},
             Case{"15/January/24", "0240115000000000"}, Case{"2024/DEC/15", "1241215000000000"},
             Case{"2024/15/DEC", "1241200000000000"}, // the day is lost
             Case{"MA/15/2024", "1240315000000000"},  // March comes before May
             Case{"UN/15/2024", "1240615000000000"},
             Case{"/15/2024", "1240115000000000"}, // an empty name is in January
             Case{"15//2024", "1240115000000000"},
             Case{" 15/ JAN/2024", "1240015000000000"}, // blanks are part of the name
             Case{"FOO/15/2024", "1240015000000000"}, Case{"0/0/0", "0000000000000000"},
             Case{"JAN/0/0", "0000100000000000"},
             Case{"10:20:30 JAN/15/2024", "1240015102030000"}, // the blanked time stands before the name
         }) {
        EXPECT_EQ(timestampOf(c.text), c.timestamp) << c.text;
    }
}

// In a numeric date any part of a month's name stands for the first month that it is in; among words it must have more
// than three letters, or be the first three and whatever follows.
TEST(StringToCorvelTime, KnowsEveryPartOfEveryMonth)
{
    const std::string months[] = {"JANUARY", "FEBRUARY", "MARCH",     "APRIL",   "MAY",      "JUNE",
                                  "JULY",    "AUGUST",   "SEPTEMBER", "OCTOBER", "NOVEMBER", "DECEMBER"};
    const auto first = [&](const auto &isNamed) {
        const auto found = std::find_if(std::begin(months), std::end(months), isNamed);
        const auto month = found != std::end(months) ? found - std::begin(months) + 1 : 0;
        return (month < 10 ? "0" : "") + std::to_string(month);
    };
    for (const std::string &name : months) {
        for (size_t from = 0; from < name.size(); ++from) {
            for (size_t length = 1; length <= name.size() - from; ++length) {
                const std::string part = name.substr(from, length);
                EXPECT_EQ(timestampOf(part + "/05/2024"), "124" + first([&](const std::string &month) {
                                                              return month.find(part) != month.npos;
                                                          }) + "05000000000")
                    << part;
                if (length > 3) {
                    EXPECT_EQ(timestampOf(part + " 5 2024"), "124" + first([&](const std::string &month) {
                                                                 return month.find(part) != month.npos ||
                                                                        month.compare(0, 3, part, 0, 3) == 0;
                                                             }) + "05000000000")
                        << part;
                }
            }
        }
    }
}

TEST(StringToCorvelTime, ReadsWords)
{
    for (const Case &c : {
             Case{"JAN 15 2024", "1240115000000000"},
             Case{"january 15, 2024", "1240115000000000"},
             Case{"JAN15", "1310115000000000"},
             Case{"JAN15 2024", "1240115000000000"},
             Case{"JAN152024", "1501240100000000000"}, // six digits are no day, and a year
             Case{"MONDAY JANUARY 5", "1310105000000000"},
             Case{"January 5 Monday", "1310105000000000"},
             Case{"5 JAN", "0000100000000000"},
             Case{"2024 JAN 5", "1240105000000000"},
             Case{"91 JAN 5", "0910105000000000"},
             Case{"90 JAN 5", "0000105000000000"},
             Case{"JAN 5 1900", "19000105000000000"},
             Case{"JAN 5 99", "0990105000000000"},
             Case{"JAN", "0000100000000000"},
             Case{"IN MAY", "0000500000000000"},
             Case{"UARY 7 2024", "1240107000000000"},
             Case{"EMBER 7 2024", "1240907000000000"},
             Case{"ARY 7 2024", "0000000000000000"}, // three letters must begin a name; 7 begins the rest
             Case{"MA 7 2024", "0000000000000000"},
             Case{"MARX 7 2024", "1240307000000000"},
             Case{"SEPT 7 2024", "1240907000000000"},
             Case{"DAY T DA", "0000000000000000"},
             Case{"JAN 5 10:20:30", "1310105102030000"},
             Case{"TODAY AT 10:20:30 PM", "0000000102030000"},
             Case{"FEB MAR 3", "1310303000000000"},
             Case{"FEB 2 MAR 3", "1310303000000000"},
             Case{"JAN\t5", "0000100000000000"}, // a tab belongs to the word
         }) {
        EXPECT_EQ(timestampOf(c.text), c.timestamp) << c.text;
    }
}

TEST(StringToCorvelTime, ReadsDottedDatesAfterTheWords)
{
    for (const Case &c : {
             Case{"2024.01.15", "0150001000000000"}, // the year is blanked before the date is read
             Case{"15.JAN.2024", "0000100000000000"},
             Case{"2024 1.2.3", "1240000000000000"}, // with a year found, the date is not assigned
             Case{"A.B 1.2", "0000000000000000"},    // one dot went with its word
             Case{"1.2/3", "0000000000000000"},
             Case{"1.2.3/4", "0000000000000000"}, // a lone slash
             Case{"1.2.3\\4", "0000000000000000"},
         }) {
        EXPECT_EQ(timestampOf(c.text), c.timestamp) << c.text;
    }
}

TEST(StringToCorvelTime, ReadsTheClock)
{
    for (const Case &c : {
             Case{"10:20", "0000000000000000"},
             Case{"10:20:30", "0000000102030000"},
             Case{"1:02:03", "0000000010203000"}, // a one-digit hour at the very start
             Case{" 1:02:03", "0000000010203000"},
             Case{":02:03", "0000000000203000"},
             Case{"::", "0000000000000000"},
             Case{"1::", "0000000010000000"},
             Case{"::5", "0000000000000000"}, // the second is looked for four characters on
             Case{"10:2:30", "0000000100200000"},
             Case{"JAN 5 2024 1:02:03", "1240105010203000"},
             Case{"x1:02:03", "0000000000203000"},    // the hour is two characters wide
             Case{"-5:-6:-7", "0000000-05-06-07000"}, // fields are printed as they are
             Case{"1:10:20:30", "0000000102030000"},
             Case{"1:2:3:4", "0000000020304000"},
             Case{":::", "0000000000000000"},
             Case{"a: :5:6 7", "0000000000506000"},             // no digits before the colons: no hour
             Case{"1:10:20:30 JAN 5 2024", "0000105102030000"}, // 1: stays, and begins the rest
             Case{"1:10: 20: 30 ", "0000000102030000"},
         }) {
        EXPECT_EQ(timestampOf(c.text), c.timestamp) << c.text;
    }
}

TEST(StringToCorvelTime, GivesZerosForATextThatYieldsNothing)
{
    for (const char *text : {"", " ", "        ", "x", "1", "/", "\\", ".", ":", "/////", ".....", "\\\\\\\\",
                             "/ . : \\", "\xFF\xFE\x80", "\t\n"}) {
        EXPECT_EQ(timestampOf(text), "0000000000000000") << text;
    }
}

TEST(StringToCorvelTime, HoldsLargeNumbersWithinTheBlock)
{
    EXPECT_EQ(timestampOf("1/2/99999999999999999999"), "2147481747010200000");
    EXPECT_EQ(timestampOf("1/2/-99999999999999999999"), "-214748364801020000");
    EXPECT_EQ(timestampOf("1/2/2147483647"), "2147481747010200000");
    EXPECT_EQ(timestampOf("1/2/2147483648"), "2147481747010200000");
    EXPECT_EQ(timestampOf("1/2/4294967297"), "2147481747010200000");
    EXPECT_EQ(timestampOf("99999999999 JAN 5"), "2147481747010500000");
    EXPECT_EQ(timestampOf("1:2:99999999999:99999999999"), "0000000022147483647");
}

TEST(StringToCorvelTime, GivesOutABlockOfTwentyBytesAndFreesItsCopy)
{
    stopInCurrentYear();
    char *timestamp = nullptr;
    const TraceLog log = traceAt(Trace::All & ~Trace::State & ~Trace::Storage,
                                 [&] { timestamp = DOV0_StringToCorvelTime("Jan 5 2024"); });
    ASSERT_EQ(log.size(), 16U);
    const std::string copied = log[6]; // tells where the copy is
    const char *const allocated = "DOV0_GetStorage: Allocated storage at address @";
    ASSERT_EQ(copied.find(allocated), 0U) << copied;
    const std::string copy =
        copied.substr(std::string(allocated).size(), copied.find(" size") - std::string(allocated).size());
    const auto *address = reinterpret_cast<const void *>(std::stoull(copy, nullptr, 16));
    EXPECT_EQ(log,
              (TraceLog{entry(Function), entry("DOV0_GetStorage"),
                        message("DOV0_GetStorage", "Allocated storage at address @%p size 20\n", timestamp),
                        leave("DOV0_GetStorage", timestamp), entry("DOV0_ConvertStringToUpper"),
                        entry("DOV0_GetStorage"),
                        message("DOV0_GetStorage", "Allocated storage at address @%p size 11\n", address),
                        leave("DOV0_GetStorage", address),
                        message("DOV0_ConvertStringToUpper", "InString <Jan 5 2024>\n"),
                        message("DOV0_ConvertStringToUpper", "OutString <JAN 5 2024>\n"),
                        leave("DOV0_ConvertStringToUpper", address),
                        message(Function, "Input time string [Jan 5 2024]\n"), entry("DOV0_FreeStorage"),
                        message("DOV0_FreeStorage", "Freeing storage at address @%p\n", address),
                        leave("DOV0_FreeStorage"), leave(Function, timestamp)}));
    EXPECT_STREQ(timestamp, "1240105000000000");
    DOV0_FreeStorage(&timestamp);
}

TEST(StringToCorvelTime, TracesTheStepsOfAWordedDate)
{
    stopInCurrentYear();
    EXPECT_EQ(
        ownTraceOf("Monday, tue jan15 Foo 09:08:07"),
        (TraceLog{entry(Function), message(Function, "Input time string [Monday, tue jan15 Foo 09:08:07]\n"),
                  message(Function, "DotCount 0 ColCount 2 SlashCount 0\n"),
                  message(Function, "Hour=9 Minute=8 Second=7\n"),
                  message(Function, "Remove unrecognized text [MONDAY,]\n"),
                  message(Function, "Found Weekday TUE\n"), message(Function, "Found Month name JAN15\n"),
                  message(Function, "Assuming MMMDD format [JAN15]\n"),
                  message(Function, "Found Day 15 after Month name\n"),
                  message(Function, "Remove unrecognized text [FOO]\n"),
                  message(Function, "Obtained current year 131\n"),
                  message(Function, "Formatted TimeStamp [1310115090807000]\n")}));
}

TEST(StringToCorvelTime, TracesTheStepsOfADottedDate)
{
    EXPECT_EQ(ownTraceOf("2024.01.15"),
              (TraceLog{entry(Function), message(Function, "Input time string [2024.01.15]\n"),
                        message(Function, "DotCount 2 ColCount 0 SlashCount 0\n"),
                        message(Function, "Found Year 2024 after Month and Day\n"),
                        message(Function, "Decoding 1     .01.15\n"), message(Function, "i=0 j=1 k=15\n"),
                        message(Function, "Year=15 Month=0 Day=1\n"),
                        message(Function, "Formatted TimeStamp [0150001000000000]\n")}));
}

TEST(StringToCorvelTime, TracesNoFurtherThanALoneSeparator)
{
    EXPECT_EQ(ownTraceOf("1.2.3/4"),
              (TraceLog{entry(Function), message(Function, "Input time string [1.2.3/4]\n"),
                        message(Function, "DotCount 2 ColCount 0 SlashCount 1\n"),
                        message(Function, "Decoding 1 1.2.3/4\n"),
                        message(Function, "Formatted TimeStamp [0000000000000000]\n")}));
}

TEST(StringToCorvelTime, ShowsEachMessageUnderItsBit)
{
    stopInCurrentYear();
    const auto bits = [](const char *text, const char *record) {
        return bitsThatShow(message(Function, "%s", record), [text] {
            char *timestamp = DOV0_StringToCorvelTime(text);
            DOV0_FreeStorage(&timestamp);
        });
    };
    EXPECT_EQ(bits("JAN 5", "Input time string [JAN 5]\n"), Trace::Detail);
    EXPECT_EQ(bits("JAN 5", "DotCount 0 ColCount 0 SlashCount 0\n"), Trace::State);
    EXPECT_EQ(bits("1:2:3:4", "Hour=2 Minute=3 Second=4\n"), Trace::State);
    EXPECT_EQ(bits("MON", "Found Weekday MON\n"), Trace::State);
    EXPECT_EQ(bits("JAN15", "Found Month name JAN15\n"), Trace::State);
    EXPECT_EQ(bits("JAN15", "Assuming MMMDD format [JAN15]\n"), Trace::State);
    EXPECT_EQ(bits("JAN15", "Found Day 15 after Month name\n"), Trace::State);
    EXPECT_EQ(bits("JAN15", "Obtained current year 131\n"), Trace::State);
    EXPECT_EQ(bits("XYZ", "Remove unrecognized text [XYZ]\n"), Trace::State);
    EXPECT_EQ(bits("JAN 5 2024", "Found Year 2024 after Month and Day\n"), Trace::State);
    EXPECT_EQ(bits("1/2/3", "Decoding 1 1/2/3\n"), Trace::Detail);
    EXPECT_EQ(bits("1/2/3", "i=1 j=2 k=3\n"), Trace::Detail);
    EXPECT_EQ(bits("1/2/3", "Year=3 Month=1 Day=2\n"), Trace::State);
    EXPECT_EQ(bits("1/2/3", "Formatted TimeStamp [0030102000000000]\n"), Trace::State);
}

TEST(StringToCorvelTime, ReturnsNullForNullAndTakesNoBlock)
{
    EXPECT_EQ(traceAt(Trace::All, [] { EXPECT_EQ(DOV0_StringToCorvelTime(nullptr), nullptr); }),
              (TraceLog{entry(Function), leave(Function, nullptr)}));
}

TEST(StringToCorvelTime, TakesAnEmptyTextForOneThatYieldsNothing)
{
    char *timestamp = nullptr;
    const TraceLog log =
        traceAt(Trace::Detail | Trace::Error, [&] { timestamp = DOV0_StringToCorvelTime(""); });
    EXPECT_EQ(log,
              (TraceLog{message("DOV0_GetStorage", "Allocated storage at address @%p size 20\n", timestamp),
                        message("DOV0_ConvertStringToUpper", "***** Input string is NULL\n"),
                        message(Function, "Input time string []\n")}));
    EXPECT_STREQ(timestamp, "0000000000000000");
    DOV0_FreeStorage(&timestamp);
    compareWithModel("");
}

TEST(StringToCorvelTime, ReturnsNullWithoutStorage)
{
    const int requests = heapRequestsOf([] {
        char *timestamp = DOV0_StringToCorvelTime("1/2/2024");
        DOV0_FreeStorage(&timestamp);
    });
    EXPECT_EQ(requests, 2);
    for (int n = 1; n <= requests; ++n) {
        char *timestamp = nullptr;
        setTraceLevel("DOV0_GetStorage", Trace::Error);
        takeTrace();
        EXPECT_TRUE(withHeapFailure(n, [&] { timestamp = DOV0_StringToCorvelTime("1/2/2024"); }));
        EXPECT_EQ(timestamp, nullptr) << n;
        EXPECT_EQ(takeTrace(),
                  (TraceLog{message("DOV0_GetStorage", "*****Unable to obtain storage, size %d\n",
                                    n == 1 ? 20 : 9)}));
    }
    EXPECT_EQ(timestampOf("1/2/2024"), "1240102000000000");
}

TEST(StringToCorvelTime, LeavesTheYearOpenWhenTheCalendarFails)
{
    stopInCurrentYear();
    setLocalTime([](const time_t *, tm *) -> tm * { return nullptr; });
    EXPECT_EQ(timestampOf("JAN 5"), "0000105000000000");
}

TEST(StringToCorvelTime, TakesTheCurrentYearOfTheTimeZoneThatTzNames)
{
    stopClock(utc(2030, 12, 31, 23, 30, 0));
    for (const Case &c : {Case{"UTC0", "1300105000000000"}, Case{"CET-1", "1310105000000000"}}) {
        setTimeZone(c.text);
        char *timestamp = DOV0_StringToCorvelTime("JAN 5");
        EXPECT_STREQ(timestamp, c.timestamp);
        DOV0_FreeStorage(&timestamp);
    }
}

TEST(StringToCorvelTime, TakesLongTexts)
{
    const auto repeated = [](const std::string &piece, size_t length) {
        std::string text;
        while (text.size() < length) {
            text += piece;
        }
        return text;
    };
    for (const char *piece :
         {" ",  ".",  ":",  "/",  "\\", "1",    "A",      "T",    "JAN", "JAN ", "JAN1 ", "SUNDAY ",
          "X ", "1 ", "1.", "1:", "1/", " /.:", "9 JAN ", "\xFF", "\t",  "MAY.", "J A N "}) {
        for (const size_t length : {2000U, 100000U}) {
            const std::string pieces = repeated(piece, length);
            for (const std::string &text :
                 {pieces, pieces + " 10:20:30 JAN 15 2024", "10:20:30 15/JAN/2024" + pieces}) {
                if (length == 2000) {
                    ASSERT_NO_FATAL_FAILURE(compareWithModel(text));
                } else {
                    ASSERT_EQ(timestampOf(text), FreeFormModel(text, CurrentYear - 1900).result) << piece;
                }
            }
        }
    }
}

TEST(StringToCorvelTime, TakesEveryShortText)
{
    for (int first = 1; first < 256; ++first) {
        compareWithModel(std::string(1, static_cast<char>(first)));
    }
    const std::string characters = "0159 /\\.:-AJNMYDT";
    for (const char a : characters) {
        for (const char b : characters) {
            for (const char c : characters) {
                compareWithModel(std::string{a, b, c});
            }
        }
    }
}

TEST(StringToCorvelTime, AgreesWithTheModelOnPiecesOfDates)
{
    const char *const pieces[] = {
        "January",    "FEB",      "march",       "Apr",   "MAY",  "JUNE",  "JULY",    "aug",
        "Sept",       "OCT",      "NOVEM",       "dec",   "UARY", "EMBER", "MA",      "UN",
        "Sunday",     "mon",      "TUES",        "DAY",   "T",    "AM",    "PM",      "noon",
        "x",          "1",        "7",           "12",    "13",   "15",    "31",      "90",
        "91",         "99",       "124",         "1900",  "1901", "2024",  "152024",  "0",
        "00",         "05",       "99999999999", "-",     "-3",   "+4",    "th",      ",",
        "'99",        "10:20:30", "1:02:03",     "10:20", ":",    "::",    "1:2:3:4", "JAN15",
        "dec3",       "May/5",    "\xC3\xA9",    "\t",    "Z",    "15JAN", "1.2.3",   "2024.01.15",
        "01/15/2024", "15\\1\\24"};
    const char *const joints[] = {" ", " ", " ", " ",  "  ", "",  "",   "/", "/",
                                  "/", ".", ".", "\\", ":",  ",", ", ", "-", "   "};
    std::mt19937 random(33);
    for (int i = 0; i < 10000; ++i) {
        std::string text(random() % 8 == 0 ? random() % 3 : 0, ' ');
        const size_t count = 1 + random() % 7;
        const char *const joint = joints[random() % std::size(joints)];
        for (size_t piece = 0; piece < count; ++piece) {
            text += pieces[random() % std::size(pieces)];
            if (piece + 1 < count || random() % 8 == 0) {
                text += random() % 2 == 0 ? joint : joints[random() % std::size(joints)];
            }
        }
        ASSERT_NO_FATAL_FAILURE(compareWithModel(text)) << i;
    }
}

TEST(StringToCorvelTime, AgreesWithTheModelOnRandomCharacters)
{
    const std::string alphabets[] = {"0123456789/.:\\ ", "01 JANFEBMRYULT:./\\",      "12 MAY.", "1:2: ",
                                     "9/J.A\\N ",        "\t\n\v\r +-19:./aZ\x80\xFF"};
    std::mt19937 random(34);
    for (int i = 0; i < 10000; ++i) {
        const std::string &alphabet = alphabets[random() % std::size(alphabets)];
        std::string text(random() % 25, '\0');
        for (char &character : text) {
            character = alphabet[random() % alphabet.size()];
        }
        ASSERT_NO_FATAL_FAILURE(compareWithModel(text)) << i;
    }
}
