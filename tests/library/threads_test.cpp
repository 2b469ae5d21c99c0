// Eight threads call every function that any thread may call, all at once: with tracing off, on, and switched while
// they run. The trace facility is the one that ships. Under the thread sanitizer each data race ends the test;
// everywhere the results and the trace have to be right.
#include "dov0610.h"
#include "nls/message_folder.h"
#include "platform/trace_file.h"
#include "support/exported_functions.h"
#include "support/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <barrier>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <random>
#include <set>
#include <sys/ioctl.h>
#include <sys/utsname.h>
#include <thread>

namespace {

using testing::AnyOf;
using testing::StrEq;

constexpr int ThreadCount = 8;

constexpr char OwnName[] = "alpha.corp.example";

// What a thread has for itself.
struct Worker {
    int number;
    std::mt19937 random;
    bool mayConfigure; // this run switches the trace

    std::string name(const char *prefix) const { return prefix + std::to_string(number); }
};

// What all threads use. Made before they start.
struct Stage {
    const TraceFile trace;
    const TemporaryFolder files;
    const MessageFolder messages;
    HostFunction host{"hostcode", "HostFunction"};
    PLT1_Lock lock = {};
    int64_t guarded = 0; // by the lock
    std::string marked;
    std::string lines;
    utsname system = {};
};

Stage *stage = nullptr;

// A control word and what it guards: static, as the operation wants it.
int32_t onceControl = 0;
int onceRuns = 0;

template <typename Pointer> std::string takenText(Pointer text)
{
    const std::string taken = text != nullptr ? text : "(null)";
    DOV0_FreeStorage(&text);
    return taken;
}

void *returnsItsArgument(void *argument)
{
    DOV0_FreeStorage(&argument);
    return nullptr;
}

int openDatagramSocket(int32_t *port = nullptr)
{
    sockaddr_in own = {};
    int32_t error = -1;
    const int32_t opened =
        DOV0_OpenLocalSocket(DOV0_SOCKET_DATAGRAM, 0, &own, DOV0_SOCKET_REUSE, &error, DOV0_BIND_OWN_ADDRESS);
    EXPECT_GT(opened, 0);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(own.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    if (port != nullptr) {
        *port = DOV0_RetrieveSockPort(opened);
    }
    return opened;
}

// One address in 65,536 that has no name, so that the list of them grows while it is searched.
in_addr_t unresolvable(Worker &worker)
{
    return htonl(0xC6120000U + (worker.random() & 0xFFFFU));
}

struct Call {
    const char *function;
    void (*call)(Worker &);
};

constexpr unsigned char TimestampOid[] = {0x06, 0x08, 0x2B, 0x06, 0x01, 0x02, 0x01, 0x01, 0x01, 0x00};

const Call Calls[] = {
    // storage
    {"DOV0_GetStorage",
     [](Worker &worker) {
         const auto size = static_cast<int32_t>(worker.random() % 300 + 1);
         auto *block = static_cast<unsigned char *>(DOV0_GetStorage(size));
         ASSERT_NE(block, nullptr);
         EXPECT_EQ(std::count(block, block + size, 0), size);
         std::memset(block, worker.number, static_cast<size_t>(size));
         EXPECT_EQ(std::count(block, block + size, worker.number), size);
         DOV0_FreeStorage(&block);
     }},
    {"DOV0_FreeStorage",
     [](Worker &) {
         void *block = DOV0_GetStorage(1);
         DOV0_FreeStorage(&block);
         EXPECT_EQ(block, nullptr);
         DOV0_FreeStorage(&block);
     }},
    {"DOV0_IsValidBlockPointer", [](Worker &worker) { EXPECT_EQ(DOV0_IsValidBlockPointer(&worker), 1); }},
    {"DOV0_IsValidPointer", [](Worker &) { EXPECT_EQ(DOV0_IsValidPointer(nullptr), 0); }},

    // environment
    {"DOV0_GetEnv",
     [](Worker &) {
         EXPECT_STREQ(DOV0_GetEnv("RPCB0_HOSTNAME", nullptr), "alpha");
         EXPECT_STREQ(DOV0_GetEnv("THREADS_NOWHERE", "default"), "default");
     }},
    {"DOV0_PutEnv",
     [](Worker &worker) {
         const std::string name = worker.name("THREADS_");
         const std::string value = std::to_string(worker.random());
         DOV0_PutEnv((name + "=" + value).c_str());
         EXPECT_EQ(DOV0_GetEnv(name.c_str(), nullptr), value); // nobody else sets this name
     }},

    // threads
    {"DOV0_InitializeMutex",
     [](Worker &) {
         pthread_mutex_t mutex;
         DOV0_InitializeMutex(&mutex);
         EXPECT_EQ(pthread_mutex_trylock(&mutex), 0);
         EXPECT_EQ(pthread_mutex_unlock(&mutex), 0);
         EXPECT_EQ(pthread_mutex_destroy(&mutex), 0);
     }},
    {"DOV0_InitializeCondVar",
     [](Worker &) {
         pthread_cond_t changed;
         DOV0_InitializeCondVar(&changed);
         EXPECT_EQ(pthread_cond_signal(&changed), 0);
         EXPECT_EQ(pthread_cond_destroy(&changed), 0);
     }},
    {"DOV0_ConditionTimedWait",
     [](Worker &) {
         pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
         pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
         pthread_mutex_lock(&mutex);
         EXPECT_THAT(DOV0_ConditionTimedWait(&changed, &mutex, 0), AnyOf(ETIMEDOUT, 0));
         pthread_mutex_unlock(&mutex);
     }},
    {"DOV0_CreateThread",
     [](Worker &) {
         pthread_t thread;
         ASSERT_EQ(DOV0_CreateThread(returnsItsArgument, DOV0_GetStorage(8), DOV0_THREAD_JOINABLE, &thread),
                   0);
         EXPECT_EQ(pthread_join(thread, nullptr), 0);
     }},
    {"DOV0_SetCloExecFlag",
     [](Worker &) {
         const int descriptor = open("/dev/null", O_RDONLY);
         EXPECT_EQ(DOV0_SetCloExecFlag(descriptor), 0);
         EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
         close(descriptor);
     }},
    {"DOV0_strtok",
     [](Worker &worker) {
         const std::string own = worker.name("t");
         std::string text = own + "a," + own + "b,," + own + "c";
         EXPECT_STREQ(DOV0_strtok(text.data(), ","), (own + "a").c_str());
         EXPECT_STREQ(DOV0_strtok(nullptr, ","), (own + "b").c_str());
         EXPECT_STREQ(DOV0_strtok(nullptr, ","), (own + "c").c_str());
         EXPECT_EQ(DOV0_strtok(nullptr, ","), nullptr);
     }},

    // product specification
    {"DOV0_QueryProductSpec",
     [](Worker &) {
         EXPECT_STREQ(DOV0_QueryProductSpec(DOV0_PSF_DCH_PORT_NUMBER), "1919");
         EXPECT_STREQ(DOV0_QueryProductSpec(DOV0_PSF_INITCNFG_FILE_NAME), "DOVPCNFG_inst1");
         EXPECT_EQ(DOV0_QueryProductSpec(DOV0_PSF_RESERVED), nullptr);
     }},
    {"DOV0_SetDPstartMode", [](Worker &) { DOV0_SetDPstartMode(0); }},

    // timestamps
    {"DOV0_GetCorvelTime",
     [](Worker &) {
         char buffer[DOV0_TIMESTAMP_SIZE];
         ASSERT_EQ(DOV0_GetCorvelTime(buffer), buffer);
         EXPECT_EQ(std::strspn(buffer, "0123456789"), size_t{DOV0_TIMESTAMP_LENGTH});
     }},
    {"DOV0_ConvertTimeToCorvelTime",
     [](Worker &worker) {
         const time_t when = worker.number; // so that the sequence is shared and restarted all the time
         const std::string text = takenText(DOV0_ConvertTimeToCorvelTime(&when, nullptr));
         EXPECT_EQ(text.substr(0, 13), "070010100000" + std::to_string(worker.number));
         EXPECT_EQ(text.size(), size_t{DOV0_TIMESTAMP_LENGTH});
     }},
    {"DOV0_GetTimeOfDay",
     [](Worker &) {
         const auto first = static_cast<uint32_t>(DOV0_GetTimeOfDay());
         EXPECT_LT(static_cast<uint32_t>(DOV0_GetTimeOfDay()) - first, 100'000U);
     }},
    {"DOV0_CorvelTimeToString",
     [](Worker &) {
         char text[DOV0_TIMESTAMP_TEXT_SIZE];
         EXPECT_EQ(DOV0_CorvelTimeToString("1240115102030000", text), 23);
         EXPECT_STREQ(text, "2024/01/15 10:20:30 000");
     }},
    {"DOV0_CorvelTimeToWeekDay",
     [](Worker &) {
         char name[DOV0_WEEKDAY_MAX_LENGTH + 1] = "";
         EXPECT_EQ(DOV0_CorvelTimeToWeekDay("1030615120000000", name), 6);
         EXPECT_STREQ(name, "Sunday");
     }},
    {"DOV0_StringToCorvelTime",
     [](Worker &) {
         EXPECT_EQ(takenText(DOV0_StringToCorvelTime("01/15/2024 10:20:30")), "1240115102030000");
         const std::string thisYear = takenText(DOV0_StringToCorvelTime("MONDAY JANUARY 5"));
         EXPECT_EQ(thisYear.substr(3), "0105000000000");
     }},

    // strings
    {"DOV0_ConvertStringToUpper",
     [](Worker &) {
         char text[] = "Mixed case 12";
         EXPECT_STREQ(DOV0_ConvertStringToUpper(text, 0), "MIXED CASE 12");
         EXPECT_EQ(takenText(DOV0_ConvertStringToUpper(text, 1)), "MIXED CASE 12");
     }},
    {"DOV0_RemoveCRandLF",
     [](Worker &) {
         char text[] = "abc\r\n";
         DOV0_RemoveCRandLF(text, DOV0_REMOVE_BOTH);
         EXPECT_STREQ(text, "abc");
     }},
    {"DOV0_TruncateFromLeft",
     [](Worker &) {
         char text[] = "abcdef";
         DOV0_TruncateFromLeft(text, 6, 4);
         EXPECT_STREQ(text, "cdef");
     }},
    {"DOV0_SubValidNameCharacter",
     [](Worker &) {
         char text[] = "my host.name";
         DOV0_SubValidNameCharacter(text);
         EXPECT_STREQ(text, "my_host_name");
     }},

    // base64
    {"DOV0_EncodeBase64",
     [](Worker &) {
         char *encoded = nullptr;
         EXPECT_EQ(DOV0_EncodeBase64("Ma", &encoded), 1);
         EXPECT_EQ(takenText(encoded), "TWE=");
     }},
    {"DOV0_EncodeToBuffer",
     [](Worker &) {
         const DOV0_Base64Group group = {{'M', 'a', 'n', 0}, 3};
         char target[5] = "";
         DOV0_EncodeToBuffer(&group, target);
         EXPECT_STREQ(target, "TWFu");
     }},
    {"DOV0_EncodeRaw",
     [](Worker &) {
         unsigned char sextets[4] = {};
         DOV0_EncodeRaw(sextets, reinterpret_cast<const unsigned char *>("Man"));
         EXPECT_THAT(sextets, testing::ElementsAre(19, 22, 5, 46));
     }},
    {"DOV0_DecodeBase64",
     [](Worker &) {
         char *decoded = nullptr;
         EXPECT_EQ(DOV0_DecodeBase64("TWFu", &decoded), 1);
         EXPECT_EQ(takenText(decoded), "Man");
     }},
    {"DOV0_DecodeToBuffer",
     [](Worker &) {
         const DOV0_Base64Group group = {{19, 22, 5, 46}, 4};
         char target[4] = "";
         DOV0_DecodeToBuffer(&group, target);
         EXPECT_STREQ(target, "Man");
     }},
    {"DOV0_DecodeRaw",
     [](Worker &) {
         const unsigned char sextets[4] = {19, 22, 5, 46};
         unsigned char bytes[3] = {};
         DOV0_DecodeRaw(bytes, sextets);
         EXPECT_THAT(bytes, testing::ElementsAre('M', 'a', 'n'));
     }},

    // records, dumps, paths
    {"DOV0_EncipherRecord",
     [](Worker &worker) {
         char record[] = "PRODUCT_CODE=OV";
         EXPECT_EQ(DOV0_EncipherRecord(record, worker.number), record);
         EXPECT_STRNE(record, "PRODUCT_CODE=OV");
         DOV0_DecipherMetaRecord(record, worker.number);
         EXPECT_STREQ(record, "PRODUCT_CODE=OV");
     }},
    {"DOV0_DecipherMetaRecord",
     [](Worker &) {
         char record[] = "\1\2";
         EXPECT_EQ(DOV0_DecipherMetaRecord(record, 5), record);
         EXPECT_STREQ(record, "\1\2");
     }},
    {"DOV0_ComputeCheckSum",
     [](Worker &) {
         EXPECT_EQ(DOV0_ComputeCheckSum("\1\2\3\4", 4, 1), 0xFAF6);
         EXPECT_NE(DOV0_ComputeCheckSum("text", 4, 0), 0);
     }},
    {"DOV0_PrintDump", [](Worker &) { DOV0_PrintDump(TimestampOid, 0, sizeof TimestampOid); }},
    {"DOV0_CheckPathSpec", [](Worker &) { EXPECT_EQ(takenText(DOV0_CheckPathSpec("/tmp")), "/tmp/"); }},
    {"DOV0_ConstructFullyQualifiedName",
     [](Worker &) {
         EXPECT_EQ(takenText(DOV0_ConstructFullyQualifiedName(nullptr, "x.dat")), "/var/agent/x.dat");
         EXPECT_EQ(takenText(DOV0_ConstructFullyQualifiedName("/tmp/", "x.dat")), "/tmp/x.dat");
     }},
    {"DOV0_CloseFile",
     [](Worker &) {
         FILE *stream = std::fopen("/dev/null", "re");
         DOV0_CloseFile(&stream);
         EXPECT_EQ(stream, nullptr);
     }},

    // BER
    {"DOV0_FormatBERlengthField",
     [](Worker &) {
         unsigned char buffer[4] = {};
         unsigned char *cursor = buffer;
         EXPECT_EQ(DOV0_FormatBERlengthField(&cursor, 128), 1);
         EXPECT_THAT(buffer, testing::ElementsAre(0x82, 0x00, 0x80, 0));
     }},
    {"DOV0_FormatBERintegerType",
     [](Worker &) {
         unsigned char buffer[5] = {};
         unsigned char *cursor = buffer;
         EXPECT_EQ(DOV0_FormatBERintegerType(&cursor, DOV0_ASN_INTEGER, 128), 4);
         EXPECT_THAT(buffer, testing::ElementsAre(2, 2, 0, 0x80, 0));
     }},
    {"DOV0_FormatBERnullType",
     [](Worker &) {
         unsigned char buffer[3] = {};
         unsigned char *cursor = buffer;
         EXPECT_EQ(DOV0_FormatBERnullType(&cursor), 2);
         EXPECT_THAT(buffer, testing::ElementsAre(5, 0, 0));
     }},
    {"DOV0_FormatBERoctetstringType",
     [](Worker &) {
         unsigned char buffer[5] = {};
         unsigned char *cursor = buffer;
         EXPECT_EQ(DOV0_FormatBERoctetstringType(&cursor, DOV0_ASN_OCTETSTRING, TimestampOid, 2), 4);
         EXPECT_THAT(buffer, testing::ElementsAre(4, 2, 6, 8, 0));
     }},
    {"DOV0_ExtractBERfield",
     [](Worker &) {
         unsigned char field[] = {2, 0x81, 1, 0x2A};
         unsigned char *cursor = field;
         unsigned char *value = nullptr;
         uint32_t length = 0;
         EXPECT_EQ(DOV0_ExtractBERfield(&cursor, &length, &value), uint32_t{DOV0_ASN_INTEGER});
         EXPECT_EQ(length, 1U);
         EXPECT_EQ(value, field + 3);
         EXPECT_EQ(cursor, field + 4);
     }},
    {"DOV0_ExtractBERinteger",
     [](Worker &) {
         unsigned char field[] = {2, 2, 0xFF, 0x80};
         unsigned char *cursor = field;
         int32_t value = 0;
         EXPECT_EQ(DOV0_ExtractBERinteger(&cursor, &value), 1);
         EXPECT_EQ(value, 65408);
     }},
    {"DOV0_GetASN1typeString", [](Worker &) { EXPECT_STREQ(DOV0_GetASN1typeString(0x30), "ASN_SEQUENCE"); }},
    {"DOV0_FormatOIDfromString",
     [](Worker &) {
         unsigned char *field = nullptr;
         int32_t size = 0;
         ASSERT_EQ(DOV0_FormatOIDfromString("1.3.6.1.2.1.1.1.0", &field, &size), 1);
         EXPECT_EQ(size, static_cast<int32_t>(sizeof TimestampOid));
         EXPECT_EQ(std::memcmp(field, TimestampOid, sizeof TimestampOid), 0);
         DOV0_FreeStorage(&field);
     }},
    {"DOV0_DecodeOIDfromBER",
     [](Worker &) {
         int32_t count = 0;
         uint32_t *elements = DOV0_DecodeOIDfromBER(TimestampOid + 2, 8, &count);
         ASSERT_EQ(count, 9);
         EXPECT_EQ(elements[3], 1U);
         DOV0_FreeStorage(&elements);
     }},
    {"DOV0_ConvertOIDtoString",
     [](Worker &) {
         const uint32_t elements[] = {1, 3, 6};
         EXPECT_EQ(takenText(DOV0_ConvertOIDtoString(elements, 3)), "1.3.6");
     }},
    {"DOV0_FormatDataField",
     [](Worker &) {
         const int32_t value = 5;
         unsigned char record[14] = {};
         EXPECT_EQ(DOV0_FormatDataField(record, record + 4, DOV0_DATA_INT_17, &value, sizeof value, nullptr),
                   10);
         EXPECT_THAT(record, testing::ElementsAre(0, 0, 0, 14, 0, 0, 0, 10, 0, 17, 0, 0, 0, 5));
     }},
    {"DOV0_ExtractDataField",
     [](Worker &) {
         unsigned char field[] = {0, 0, 0, 10, 0, 17, 0, 0, 0, 5};
         unsigned char *cursor = field;
         unsigned char *data = nullptr;
         int32_t length = 0;
         EXPECT_EQ(DOV0_ExtractDataField(&cursor, &data, &length, nullptr), 17);
         int32_t value = 0;
         ASSERT_EQ(length, 4);
         std::memcpy(&value, data, sizeof value);
         EXPECT_EQ(value, 5);
     }},
    {"DOV0_ExtractXMLfield", [](Worker &) { EXPECT_EQ(DOV0_ExtractXMLfield(1, 2), 0); }},
    {"DOV0_DetermineNodeServiceType",
     [](Worker &) { EXPECT_EQ(takenText(DOV0_DetermineNodeServiceType(72)), "Applications,Hosts"); }},

    // byte order and character sets
    {"DOV0_ConvertDataToLocal",
     [](Worker &) {
         char data[] = "\xC1\x4F";
         DOV0_ConvertDataToLocal(data, 2);
         EXPECT_STREQ(data, "A|");
     }},
    {"DOV0_ConvertDataToNetwork",
     [](Worker &) {
         char data[] = "[\xE9";
         DOV0_ConvertDataToNetwork(data, 2);
         EXPECT_STREQ(data, "\xAD\x6F");
     }},
    {"DOV0_ConvertEBCDICtoASCII",
     [](Worker &) {
         char data[] = "\xC1";
         DOV0_ConvertEBCDICtoASCII(data, 1);
         EXPECT_STREQ(data, "A");
     }},
    {"DOV0_IsSourceASCII", [](Worker &) { EXPECT_EQ(DOV0_IsSourceASCII("0123456789\x80", 11), 0); }},
    {"DOV0_CheckCodeConversion", [](Worker &) { EXPECT_EQ(DOV0_CheckCodeConversion('A', nullptr), 0); }},
    {"DOV0_ConvertShortEndian",
     [](Worker &) {
         char data[] = "12";
         DOV0_ConvertShortEndian(data);
         EXPECT_STREQ(data, "21");
     }},
    {"DOV0_ConvertLongEndian",
     [](Worker &) {
         char data[] = "1234";
         DOV0_ConvertLongEndian(data);
         EXPECT_STREQ(data, "4321");
     }},
    {"DOV0_CheckIntegerEndian",
     [](Worker &) {
         uint32_t integer = htonl(0x12345678U);
         DOV0_CheckIntegerEndian(&integer, 4);
         EXPECT_EQ(integer, 0x12345678U);
     }},

    // unicode
    {"DOV0_UTF8ConverterInitialization", [](Worker &) { DOV0_UTF8ConverterInitialization(nullptr); }},
    {"DOV0_ConvertDataToUnicode",
     [](Worker &) {
         char16_t *text = nullptr;
         int32_t units = 0;
         ASSERT_EQ(DOV0_ConvertDataToUnicode("ISO-8859-1", "caf\xE9", 4, &text, &units), 4);
         EXPECT_EQ(std::u16string(text, 4), u"caf\u00E9");
         DOV0_FreeStorage(&text);
     }},
    {"DOV0_ConvertUnicodeToUTF8",
     [](Worker &worker) {
         const std::u16string text = u"\u20AC" + std::u16string(static_cast<size_t>(worker.number), u'x');
         char output[20];
         EXPECT_EQ(DOV0_ConvertUnicodeToUTF8(text.c_str(), static_cast<int32_t>(text.size()), output, 20),
                   worker.number + 3);
         EXPECT_EQ(output, "\xE2\x82\xAC" + std::string(static_cast<size_t>(worker.number), 'x'));
     }},
    {"DOV0_GetUTF8CharacterCount",
     [](Worker &worker) {
         const std::string text(static_cast<size_t>(worker.number) * 300, 'x');
         EXPECT_EQ(DOV0_GetUTF8CharacterCount(text.c_str(), static_cast<int32_t>(text.size()), nullptr),
                   worker.number * 300);
         EXPECT_EQ(DOV0_GetUTF8CharacterCount("\xE2\x82", 2, nullptr),
                   1); // half a character leaves nothing behind
     }},
    {"DOV0_ConvertUTF8ToNative",
     [](Worker &) {
         char output[10] = "";
         EXPECT_EQ(DOV0_ConvertUTF8ToNative("\xE2\x82\xAC", 3, output, sizeof output), 3);
         EXPECT_STREQ(output, "\xE2\x82\xAC");
     }},
    {"DOV0_MoveStringPointerByChar",
     [](Worker &) {
         const char text[] = "a\xC3\xA9 b";
         EXPECT_EQ(DOV0_MoveStringPointerByChar(text, 2), text + 3);
     }},
    {"DOV0_FindChar",
     [](Worker &) {
         const char text[] = {1, 0x41, 0, 0x41};
         EXPECT_EQ(DOV0_FindChar(text, 4, "\0\x41", DOV0_UTF16BE, 1), text + 2);
     }},
    {"DOV0_LNG2_GetFileEncoding",
     [](Worker &) {
         int32_t length = 0;
         unsigned char mark[DOV0_BYTE_ORDER_MARK_SIZE];
         EXPECT_STREQ(DOV0_LNG2_GetFileEncoding(stage->marked.c_str(), &length, mark), "UTF-16LE");
         EXPECT_EQ(length, 2);
         EXPECT_THAT(mark, testing::ElementsAre(0xFF, 0xFE, 0, 0));
     }},
    {"DOV0_LNG2_GetFileEncodingType",
     [](Worker &) { EXPECT_EQ(DOV0_LNG2_GetFileEncodingType("UTF-16LE"), DOV0_UTF16LE); }},
    {"DOV0_Fgets",
     [](Worker &) {
         FILE *stream = std::fopen(stage->marked.c_str(), "rbe");
         ASSERT_NE(stream, nullptr);
         std::fseek(stream, 2, SEEK_SET);
         char line[100];
         int32_t count = 0;
         EXPECT_EQ(DOV0_Fgets(line, sizeof line, stream, &count, "UTF-16LE", DOV0_UTF16LE, 1), line);
         EXPECT_STREQ(line, "ab\n");
         EXPECT_EQ(count, 6);
         std::fclose(stream);
     }},
    {"DOV0_fgets",
     [](Worker &) {
         FILE *stream = std::fopen(stage->lines.c_str(), "rbe");
         ASSERT_NE(stream, nullptr);
         char line[100];
         EXPECT_EQ(DOV0_fgets(line, sizeof line, stream), line);
         EXPECT_STREQ(line, "first\n");
         std::fclose(stream);
     }},

    // messages and console
    {"DOV0_LNG2_Message",
     [](Worker &worker) {
         char text[100];
         DOV0_LNG2_Message(DOV0_MESSAGE_CLASS_V, text, sizeof text, 1, worker.name("node").c_str(), nullptr,
                           nullptr, nullptr, "caf\xC3\xA9");
         EXPECT_EQ(text, "Node " + worker.name("node") + " is down: caf\xC3\xA9");
     }},
    {"DOV0_LNG2_MsgSubparmToUTF_Util",
     [](Worker &) {
         char16_t text[10];
         DOV0_LNG2_MsgSubparmToUTF_Util(nullptr, text, 10, "caf\xC3\xA9");
         EXPECT_EQ(std::u16string(text), u"caf\u00E9");
     }},
    {"DOV0_ZTconsoleMessage",
     [](Worker &) { EXPECT_EQ(DOV0_ZTconsoleMessage("ALERT extra", "s", "message"), 0); }},
    {"DOV0_CheckSystemCommandCodepage",
     [](Worker &) { EXPECT_EQ(DOV0_CheckSystemCommandCodepage(1252, LNG2_LANGUAGE_GREEK), 737); }},
    {"DOV0_ConvertUTF8CommandToDOS",
     [](Worker &) {
         char output[20] = "";
         EXPECT_EQ(DOV0_ConvertUTF8CommandToDOS("dir", 3, output, sizeof output), 4);
         EXPECT_STREQ(output, "dir ");
         EXPECT_EQ(DOV0_ConvertUTF8CommandToDOS("\xC3\xA9", 2, output, sizeof output), 2);
         EXPECT_STREQ(output, "\x82 ");
     }},

    // hosts
    {"DOV0_GetHostByName",
     [](Worker &) {
         hostent *record = DOV0_GetHostByName("beta.corp.example");
         ASSERT_NE(record, nullptr);
         EXPECT_EQ(record->h_length, 4);
         DOV0_FreeStorage(&record);
         EXPECT_EQ(DOV0_GetHostByName("nowhere.example"), nullptr);
     }},
    {"DOV0_GetHostByAddr",
     [](Worker &worker) {
         const in_addr_t known = inet_addr("192.0.2.7");
         hostent *record = DOV0_GetHostByAddr(&known);
         ASSERT_NE(record, nullptr);
         EXPECT_STREQ(record->h_name, "host-7.corp.example");
         DOV0_FreeStorage(&record);
         const in_addr_t unknown = unresolvable(worker);
         EXPECT_EQ(DOV0_GetHostByAddr(&unknown), nullptr);
         EXPECT_EQ(DOV0_GetHostByAddr(&unknown), nullptr);
     }},
    {"DOV0_ConvertNameToAddr",
     [](Worker &) {
         sockaddr_in found = {};
         EXPECT_EQ(DOV0_ConvertNameToAddr("192.0.2.1", 161, &found), 1);
         EXPECT_EQ(found.sin_addr.s_addr, inet_addr("192.0.2.1"));
         EXPECT_EQ(found.sin_port, htons(161));
         EXPECT_EQ(DOV0_ConvertNameToAddr(OwnName, 0, &found), 1);
         EXPECT_EQ(found.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
     }},
    {"DOV0_ConvertAddrToName",
     [](Worker &) {
         sockaddr_in address = {};
         address.sin_addr.s_addr = inet_addr("192.0.2.9");
         char *name = nullptr;
         ASSERT_EQ(DOV0_ConvertAddrToName(&address, &name, DOV0_SHORT_NAME), 1);
         EXPECT_EQ(takenText(name), "host-9");
     }},
    {"DOV0_ResolveAddressToName",
     [](Worker &worker) {
         EXPECT_EQ(takenText(DOV0_ResolveAddressToName("192.0.2.3")), "host-3.corp.example");
         const in_addr unknown = {unresolvable(worker)};
         char dotted[INET_ADDRSTRLEN];
         inet_ntop(AF_INET, &unknown, dotted, sizeof dotted);
         EXPECT_EQ(DOV0_ResolveAddressToName(dotted), nullptr);
     }},
    {"DOV0_LocalHostNameString", [](Worker &) { EXPECT_STREQ(DOV0_LocalHostNameString(), OwnName); }},
    {"DOV0_LocalHostAddrString", [](Worker &) { EXPECT_STREQ(DOV0_LocalHostAddrString(), "127.0.0.1"); }},
    {"DOV0_GetLocalDomainName", [](Worker &) { EXPECT_STREQ(DOV0_GetLocalDomainName(), "corp.example"); }},
    {"DOV0_GetLocalComputerName",
     [](Worker &) {
         char name[DOV0_COMPUTER_NAME_SIZE] = "";
         EXPECT_EQ(DOV0_GetLocalComputerName(name), 1);
         EXPECT_STREQ(name, stage->system.nodename);
     }},
    {"DOV0_GetLocalHostInfo",
     [](Worker &) {
         char name[DOV0_HOST_INFO_SIZE] = "";
         EXPECT_EQ(DOV0_GetLocalHostInfo(name), 1);
         EXPECT_STREQ(name, stage->system.sysname);
     }},
    {"DOV0_IsOwnHostName",
     [](Worker &) {
         EXPECT_EQ(DOV0_IsOwnHostName("ALPHA"), 1);
         EXPECT_EQ(DOV0_IsOwnHostName("alpha.other.example"), 0);
     }},
    {"DOV0_IsThisAddressString", [](Worker &) { EXPECT_EQ(DOV0_IsThisAddressString("10.1.2.3"), 3); }},
    {"DOV0_IsThisFullyQualifiedName",
     [](Worker &) { EXPECT_EQ(DOV0_IsThisFullyQualifiedName("work/x.dat"), 1); }},

    // sockets
    {"DOV0_OpenLocalSocket", [](Worker &) { close(openDatagramSocket()); }},
    {"DOV0_RetrieveSockPort",
     [](Worker &) {
         int32_t port = 0;
         const int opened = openDatagramSocket(&port);
         EXPECT_GT(port, 0);
         close(opened);
     }},
    {"DOV0_SetSocketIoctl",
     [](Worker &) {
         const int opened = openDatagramSocket();
         int waiting = -1;
         EXPECT_EQ(DOV0_SetSocketIoctl(opened, FIONREAD, &waiting), 0);
         EXPECT_EQ(waiting, 0);
         close(opened);
     }},
    {"DOV0_CloseTheSocket", [](Worker &) { EXPECT_EQ(DOV0_CloseTheSocket(openDatagramSocket()), 0); }},
    {"DOV0_WinSockInitialization", [](Worker &) { EXPECT_EQ(DOV0_WinSockInitialization(), 1); }},

    // trace facility
    {"TRC1_Sync",
     [](Worker &) {
         TRC1_Sync(&stage->host.block);
         EXPECT_NE(__atomic_load_n(&stage->host.block.generation, __ATOMIC_ACQUIRE), 0);
     }},
    {"TRC1_Event",
     [](Worker &worker) {
         TRC1_Event(&stage->host.block, 1, TRC1_EVENT_EXIT_VALUE, static_cast<intptr_t>(worker.number));
     }},
    {"TRC1_Printf",
     [](Worker &worker) {
         const std::string own(static_cast<size_t>(worker.number) * 150 + 1,
                               static_cast<char>('a' + worker.number));
         TRC1_Printf(&stage->host.block, 2, "own text %d <%s>\n", worker.number, own.c_str());
     }},
    {"TRC1_Dump",
     [](Worker &) { TRC1_Dump(&stage->host.block, 3, TimestampOid, sizeof TimestampOid, "%02.2X"); }},
    {"TRC1_Configure",
     [](Worker &worker) {
         if (!worker.mayConfigure) {
             EXPECT_EQ(TRC1_Configure("nonsense", nullptr), -1); // and nothing changes
             return;
         }
         const char *const levels[] = {"",    "all", "error", "flow+detail", "dov0gsto=all,DOV0_GetEnv=state",
                                       "0x10"};
         const std::string file = stage->trace.name() + (worker.random() % 2 != 0 ? "" : ".second");
         EXPECT_EQ(TRC1_Configure(levels[worker.random() % std::size(levels)], file.c_str()), 0);
     }},

    // services
    {"PLT1_GetEnv", [](Worker &) { EXPECT_STREQ(PLT1_GetEnv("RPCB0_HOSTNAME", 0), "alpha"); }},
    {"PLT1_InitializeLock",
     [](Worker &) {
         PLT1_Lock lock = {};
         PLT1_InitializeLock(&lock);
         PLT1_GetLock(&lock);
         PLT1_ReleaseLock(&lock);
     }},
    {"PLT1_GetLock",
     [](Worker &) {
         PLT1_GetLock(&stage->lock);
         const int64_t before = stage->guarded;
         stage->guarded = -1;
         EXPECT_EQ(stage->guarded, -1);
         stage->guarded = before + 1;
         PLT1_ReleaseLock(&stage->lock);
     }},
    {"PLT1_ReleaseLock",
     [](Worker &) {
         PLT1_GetLock(&stage->lock);
         EXPECT_GE(++stage->guarded, 1);
         PLT1_ReleaseLock(&stage->lock);
     }},
    {"PLT1_InitializeOnce",
     [](Worker &) {
         PLT1_InitializeOnce(
             &onceControl, [](void *runs) { ++*static_cast<int *>(runs); }, &onceRuns, "hostcode", 4);
         EXPECT_EQ(onceRuns, 1);
     }},
    {"PLT1_ThreadID",
     [](Worker &) {
         thread_local const int32_t first = PLT1_ThreadID();
         EXPECT_NE(first, 0);
         EXPECT_EQ(PLT1_ThreadID(), first);
     }},
    {"PLT1_GetTime",
     [](Worker &) {
         timespec now = {};
         PLT1_GetTime(&now);
         EXPECT_LE(std::abs(now.tv_sec - std::time(nullptr)), 60);
     }},

    // language support
    {"LNG2_GetLocale",
     [](Worker &worker) {
         int32_t status = -1;
         LNG2_Locale *locale = LNG2_GetLocale(nullptr, nullptr, nullptr, &status);
         ASSERT_NE(locale, nullptr);
         EXPECT_STREQ(locale->name, "en_US");
         std::strcpy(locale->name, worker.name("own").c_str()); // the object is its user's alone
         EXPECT_EQ(locale->name, worker.name("own"));
         LNG2_ReleaseLocale(locale);
     }},
    {"LNG2_GetThreadLocale",
     [](Worker &) {
         int32_t status = -1;
         LNG2_Locale *locale = LNG2_GetThreadLocale(&status);
         ASSERT_NE(locale, nullptr);
         EXPECT_EQ(locale->codepage, 1252);
         LNG2_ReleaseLocale(locale);
     }},
    {"LNG2_ReleaseLocale", [](Worker &) { LNG2_ReleaseLocale(nullptr); }},
    {"LNG2_GetCodepageId",
     [](Worker &) {
         int32_t status = -1;
         EXPECT_EQ(LNG2_GetCodepageId("UTF-8", &status), LNG2_CODEPAGE_UTF8);
         EXPECT_EQ(status, 0);
     }},
    {"LNG2_GetCodepageName",
     [](Worker &) {
         char name[LNG2_CODEPAGE_NAME_SIZE];
         EXPECT_EQ(LNG2_GetCodepageName(1252, name, sizeof name), 0);
         EXPECT_STREQ(name, "windows-1252");
     }},
    {"LNG2_TranslateString",
     [](Worker &worker) {
         const int32_t target = worker.random() % 2 != 0 ? 1252 : 850;
         char output[10] = "";
         int32_t consumed = 0;
         int32_t status = -1;
         EXPECT_EQ(LNG2_TranslateString(target, output, sizeof output, LNG2_CODEPAGE_UTF8, "\xC3\xA9", 2,
                                        &consumed, 0, &status),
                   1);
         EXPECT_STREQ(output, target == 1252 ? "\xE9" : "\x82");
     }},
    {"LNG2_ResourceOpen",
     [](Worker &) {
         LNG2_Locale locale = {0, 0, "en_US"};
         int32_t status = -1;
         LNG2_ResourceBundle *bundle = LNG2_ResourceOpen(stage->messages.bundle().c_str(), &locale, &status);
         EXPECT_NE(bundle, nullptr);
         LNG2_ResourceClose(bundle);
         std::strcpy(locale.name, "de");
         bundle = LNG2_ResourceOpen((stage->messages.bundle() + "/missing").c_str(), &locale, &status);
         EXPECT_EQ(bundle, nullptr);
     }},
    {"LNG2_GetStringByKey",
     [](Worker &) {
         LNG2_Locale locale = {0, 0, "en_US"};
         int32_t status = -1;
         LNG2_ResourceBundle *bundle = LNG2_ResourceOpen(stage->messages.bundle().c_str(), &locale, &status);
         int32_t length = 0;
         const char16_t *text = LNG2_GetStringByKey(bundle, "DOVPV2", &length, &status);
         ASSERT_NE(text, nullptr);
         EXPECT_EQ(std::u16string(text), u"second");
         EXPECT_EQ(length, 6);
         LNG2_ResourceClose(bundle);
     }},
    {"LNG2_ResourceClose", [](Worker &) { LNG2_ResourceClose(nullptr); }},
    {"AGF_CreateMessage", [](Worker &) { AGF_CreateMessage(nullptr, "c", "message", 0); }},
};

// Functions that the manual keeps to one thread, each for the reason it gives.
constexpr const char *OneThreadOnly[] = {
    "DOV0_InitializeProductSpec", // fills the table of values, at start-up
    "DOV0_UpdateProductSpec",     // replaces values that others may be reading, at start-up
    "DOV0_GetCurrentDayTime",     // returns a static text that the next call overwrites
    "DOV0_terminateString",       // returns a static area that the next call overwrites
};

// Sets up what the calls expect; the environment is complete before the library is first called.
void setUp(const char *traceLevels, const char *traceLimit)
{
    static Stage theStage;
    stage = &theStage;
    for (const auto &[name, value] : {std::pair{"DOV_TRACE", traceLevels},
                                      {"DOV_TRACE_LIMIT", traceLimit},
                                      {"LC_ALL", "en_US.UTF-8"},
                                      {"TZ", "UTC"},
                                      {"RPCB0_HOSTNAME", "alpha"},
                                      {"DOV_TCPIP_DOMAIN_NAME", "corp.example"},
                                      {"DOV_WORK_PATH", "/var/agent"},
                                      {"DOV_OMC", "Y"}}) {
        setenv(name, value, 1);
    }
    for (const char *const name :
         {"DOV_DCH_HOSTNAME", "DOV_DP_HOSTNAME", "DOV_USE_DOMAIN_NAME", "DOV_HOSTENT_DATA_SIZE"}) {
        unsetenv(name);
    }
    setenv("DOVP_RB_PATH", stage->messages.path().c_str(), 1);
    stage->trace.nameInEnvironment();
    stage->messages.add("root", "DOVPV1 { \"Node {0} is down: {4}\" }\nDOVPV2 { \"second\" }");
    stage->marked = stage->files.write("marked", std::string("\xFF\xFE"
                                                             "a\0b\0\n\0c\0",
                                                             10));
    stage->lines = stage->files.write("lines", "\xEF\xBB\xBF"
                                               "first\nsecond\n");
    ASSERT_EQ(uname(&stage->system), 0);
    PLT1_InitializeLock(&stage->lock);
    ASSERT_EQ(DOV0_InitializeProductSpec("inst1", 1), 1); // at start-up, by one thread
}

// Each thread makes all calls in an order of its own, again and again. In the first round all threads enter the same
// function at the same moment, which for most is its first use.
void callAll(int leastRounds, std::chrono::milliseconds time, bool mayConfigure)
{
    std::barrier<> together(ThreadCount);
    std::atomic<int> fewestRounds = INT32_MAX;
    const auto end = std::chrono::steady_clock::now() + time;
    std::vector<std::thread> threads;
    for (int number = 1; number <= ThreadCount; ++number) {
        threads.emplace_back([&, number] {
            Worker worker = {number, std::mt19937(static_cast<unsigned>(number)), mayConfigure};
            for (const Call &call : Calls) {
                together.arrive_and_wait();
                call.call(worker);
            }
            std::array<size_t, std::size(Calls)> order;
            for (size_t i = 0; i < order.size(); ++i) {
                order[i] = i;
            }
            int rounds = 1;
            while (!testing::Test::HasFailure() &&
                   (rounds < leastRounds || std::chrono::steady_clock::now() < end)) {
                std::shuffle(order.begin(), order.end(), worker.random);
                for (const size_t i : order) {
                    Calls[i].call(worker);
                }
                ++rounds;
            }
            int fewest = fewestRounds.load();
            while (rounds < fewest && !fewestRounds.compare_exchange_weak(fewest, rounds)) {
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_GE(fewestRounds, leastRounds);
    // Two calls of the table add one each.
    EXPECT_GE(stage->guarded, int64_t{2} * ThreadCount * fewestRounds);
}

// The message that a thread writes itself arrives whole, never mixed with another thread's.
bool isWhole(const std::string &text)
{
    int number = 0;
    char own[2000] = "";
    return std::sscanf(text.c_str(), "own text %d <%1999[^>]>", &number, own) == 2 &&
           own == std::string(static_cast<size_t>(number) * 150 + 1, static_cast<char>('a' + number));
}

} // namespace

// The resolver's answers are in a record for each thread, as the manual makes no promise about the system's.
extern "C" hostent *gethostbyname(const char *name)
{
    thread_local in_addr_t address;
    thread_local char *addresses[] = {reinterpret_cast<char *>(&address), nullptr};
    thread_local char *noAliases[] = {nullptr};
    thread_local hostent record;
    if (std::strstr(name, "corp.example") == nullptr) {
        h_errno = HOST_NOT_FOUND;
        return nullptr;
    }
    address = htonl(INADDR_LOOPBACK);
    record = {const_cast<char *>(name), noAliases, AF_INET, sizeof address, addresses};
    return &record;
}

extern "C" hostent *gethostbyaddr(const void *address, socklen_t /*length*/, int /*family*/)
{
    thread_local char name[40];
    thread_local hostent record;
    const auto *bytes = static_cast<const unsigned char *>(address);
    if (bytes[0] != 192) {
        h_errno = HOST_NOT_FOUND;
        return nullptr;
    }
    std::snprintf(name, sizeof name, "host-%d.corp.example", bytes[3]);
    record = {name, nullptr, AF_INET, 4, nullptr};
    return &record;
}

TEST(Threads, EveryFunctionIsCalledOrKeptToOneThread)
{
    std::set<std::string> called;
    for (const Call &call : Calls) {
        EXPECT_TRUE(called.insert(call.function).second) << call.function << " is there twice";
    }
    const std::set<std::string> oneThreadOnly(std::begin(OneThreadOnly), std::end(OneThreadOnly));
    const auto functions = exportedFunctions();
    EXPECT_EQ(functions.size(), called.size() + oneThreadOnly.size());
    for (const auto &[name, manual] : functions) {
        const bool anyThread =
            manual.find("Any thread") != std::string::npos || manual.find("The thread") != std::string::npos;
        const bool oneThread = manual.find("One thread") != std::string::npos;
        EXPECT_NE(anyThread, oneThread) << name << ": the manual does not say who may call it";
        EXPECT_EQ(called.contains(name), anyThread) << name;
        EXPECT_EQ(oneThreadOnly.contains(name), oneThread) << name;
    }
}

TEST(Threads, WithTracingOff)
{
    setUp("", "4");
    callAll(2, std::chrono::milliseconds(2000), false);
}

// The trace of each thread by itself has every entry with its exit.
TEST(Threads, WithTracingOn)
{
    setUp("all", "1000");
    callAll(4, std::chrono::milliseconds(1000), false);

    std::map<int, std::vector<std::string>> entered;
    std::set<std::string> seen;
    int ownTexts = 0;
    for (const TraceLine &line : stage->trace.lines()) {
        std::vector<std::string> &open = entered[line.thread];
        if (line.function == "HostFunction" && line.line == 2) {
            ++ownTexts;
            ASSERT_TRUE(isWhole(line.text)) << line.text;
        } else if (line.function == "HostFunction" || line.function == "TRC1_Configure") {
            continue;
        } else if (line.text == "entry") {
            open.push_back(line.function);
            seen.insert(line.function);
        } else if (line.text.starts_with("exit")) {
            ASSERT_FALSE(open.empty()) << line.function;
            ASSERT_EQ(open.back(), line.function);
            open.pop_back();
        } else if (!open.empty() && !line.function.starts_with("DOV0_IsValid")) {
            // A message belongs to the function entered last, unless that one reports no events.
            EXPECT_TRUE(open.back() == line.function || line.function == "DOV0_DecipherMetaRecord")
                << line.function;
        }
    }
    for (const auto &[thread, open] : entered) {
        EXPECT_TRUE(open.empty()) << thread;
    }
    EXPECT_GE(ownTexts, ThreadCount * 4);
    for (const Call &call : Calls) {
        const std::string function = call.function;
        const bool withoutEvents = function.starts_with("DOV0_IsValid") ||
                                   function == "DOV0_DecipherMetaRecord" || function == "DOV0_GetCorvelTime";
        EXPECT_EQ(seen.contains(function), function.starts_with("DOV0_") && !withoutEvents) << function;
    }
}

// Levels and files change all the time, and files are renamed when they are full; every line stays whole.
TEST(Threads, WithTracingSwitched)
{
    setUp("all", "1");
    callAll(4, std::chrono::milliseconds(2000), true);

    size_t lines = 0;
    for (const char *const suffix : {"", ".1", ".second", ".second.1"}) {
        for (const TraceLine &line : TraceFile::linesOf(TraceFile::contents(stage->trace.name() + suffix))) {
            ++lines;
            if (line.function == "HostFunction" && line.line == 2) {
                ASSERT_TRUE(isWhole(line.text)) << line.text;
            }
        }
    }
    EXPECT_GT(lines, 1000U);
}

// The console's tool, as a data provider that runs on its own starts it, by all threads at once.
TEST(Threads, StartTheConsoleTool)
{
    setUp("all", "1000");
    const std::string tool =
        stage->files.write("AGFMESG", "#!/bin/sh\necho \"$@\" >>\"$(dirname \"$0\")/called\"\nexit 3\n");
    ASSERT_EQ(chmod(tool.c_str(), 0755), 0);
    setenv("PATH", (stage->files.path + ":" + std::getenv("PATH")).c_str(), 1);
    DOV0_SetDPstartMode(1);
    std::vector<std::thread> threads;
    for (int number = 1; number <= ThreadCount; ++number) {
        threads.emplace_back([number] {
            const std::string message = "message " + std::to_string(number);
            const int32_t status = DOV0_ZTconsoleMessage("ALERT extra", nullptr, message.c_str());
            EXPECT_TRUE(WIFEXITED(status));
            EXPECT_EQ(WEXITSTATUS(status), 3);
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    const std::string called = contentsOf(stage->files.file("called"));
    for (int number = 1; number <= ThreadCount; ++number) {
        EXPECT_NE(called.find("-c ALERT message " + std::to_string(number) + "\n"), std::string::npos)
            << number;
    }
}
