// Every exported function without storage: the n-th request for heap storage fails, alone or with all that follow it,
// n = 1, 2, 3, ... until the call does not come that far. The result is one that the manual allows, a refusal leaves a
// message, nothing is lost, and a second call works, so that no lock was left held. Functions that take no storage are
// listed as such, and their requests are counted.
#include "dov0610.h"
#include "nls/message_folder.h"
#include "platform/trace_file.h"
#include "support/exported_functions.h"
#include "support/heap_faults.h"
#include "support/product_spec_file.h"
#include "support/program.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unicode/ucnv.h>
#include <unicode/uloc.h>
#include <unicode/ures.h>
#include <vector>

namespace {

// A sanitizer's strdup asks its own heap, past the stand-ins; leaks are then its business.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool seesAllRequests = false;
#else
constexpr bool seesAllRequests = true;
#endif

enum class Outcome {
    Worked,  // the whole result
    Refused, // the result that the manual has for want of storage
    Wrong,   // anything else
};

enum class Storage {
    None,      // the function requests none
    Essential, // without any block that it requests it refuses
    Helpful,   // without some of them it works all the same: what it does then is in the manual
    FirstUse,  // the same, and a first use in the process that was refused stays refused
};

// What a call expects to find, made in the process of the call before anything is counted.
enum Need : unsigned {
    Nothing = 0,
    ICU = 1,         // the function uses ICU, whose own first use is another case
    ProductSpec = 2, // in effect
    Files = 4,
    Bundle = 8,
    ColdTrace = 16, // the trace facility has not been used
    Silent = 32,    // a refusal leaves no error message
    SpecFile = 64,  // a product specification file that the environment names
};

struct Case {
    const char *function;
    Storage storage;
    unsigned needs;
    Outcome (*call)();
    const char *variant = "";
};

std::ostream &operator<<(std::ostream &stream, const Case &testCase)
{
    return stream << testCase.function << testCase.variant;
}

// What the calls use.
struct Stage {
    TraceFile trace;
    TemporaryFolder files;
    HostFunction host{"hostcode", "HostFunction"};
    std::string traceName = trace.name();
    std::string messages;
    std::string bundle;
    std::string marked;
    std::string lines;
    std::optional<ProductSpecFile> specification;
};

Stage *stage = nullptr;

constexpr char OwnName[] = "alpha.corp.example";
constexpr unsigned char OidField[] = {0x06, 0x08, 0x2B, 0x06, 0x01, 0x02, 0x01, 0x01, 0x01, 0x00};

// The judges look at a result without being counted, and give back what it is in.

Outcome is(bool worked)
{
    return worked ? Outcome::Worked : Outcome::Wrong;
}

Outcome isText(char *text, const char *expected)
{
    const HeapFaultPause pause;
    if (text == nullptr) {
        return Outcome::Refused;
    }
    const Outcome outcome = is(std::strcmp(text, expected) == 0);
    DOV0_FreeStorage(&text);
    return outcome;
}

template <typename Object> Outcome isBlock(Object *block)
{
    const HeapFaultPause pause;
    if (block == nullptr) {
        return Outcome::Refused;
    }
    DOV0_FreeStorage(&block);
    return Outcome::Worked;
}

// A text of the library's own.
Outcome isKeptText(const char *text, const char *expected)
{
    return text == nullptr ? Outcome::Refused : is(std::strcmp(text, expected) == 0);
}

FILE *openUncounted(const std::string &name)
{
    const HeapFaultPause pause;
    return std::fopen(name.c_str(), "rbe");
}

void closeUncounted(FILE *stream)
{
    const HeapFaultPause pause;
    std::fclose(stream);
}

std::string traced()
{
    return stage->trace.contents();
}

// Whether a call brought one more line into the trace, whole or cut.
template <typename Function> Outcome tracesOneLine(const Function &call)
{
    const auto lines = [] {
        const HeapFaultPause pause;
        const std::string text = traced();
        return std::count(text.begin(), text.end(), '\n');
    };
    const auto before = lines();
    call();
    return is(lines() == before + 1);
}

void *endsAtOnce(void *argument)
{
    return argument;
}

int aSocket()
{
    const HeapFaultPause pause;
    return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

// Changes at each call, so that a value that was set is told from one that was set before.
int32_t count()
{
    static int32_t calls = 0;
    return ++calls;
}

const Case Cases[] = {
    // storage
    {"DOV0_GetStorage", Storage::Essential, Nothing, [] { return isBlock(DOV0_GetStorage(100)); }},
    {"DOV0_FreeStorage", Storage::None, Nothing,
     [] {
         void *block = nullptr;
         {
             const HeapFaultPause pause;
             block = DOV0_GetStorage(100);
         }
         DOV0_FreeStorage(&block);
         return is(block == nullptr);
     }},
    {"DOV0_IsValidBlockPointer", Storage::None, Nothing,
     [] { return is(DOV0_IsValidBlockPointer(OwnName) == 1); }},
    {"DOV0_IsValidPointer", Storage::None, Nothing, [] { return is(DOV0_IsValidPointer(OwnName) == 1); }},

    // environment
    {"DOV0_GetEnv", Storage::None, Nothing,
     [] { return isKeptText(DOV0_GetEnv("RPCB0_HOSTNAME", nullptr), "alpha"); }},
    {"DOV0_PutEnv", Storage::Essential, Nothing,
     [] {
         char setting[40];
         std::snprintf(setting, sizeof setting, "allocation_failure=%d", count());
         DOV0_PutEnv(setting);
         const HeapFaultPause pause;
         const char *value = DOV0_GetEnv("ALLOCATION_FAILURE", nullptr);
         const bool set = value != nullptr && std::strcmp(value, std::strchr(setting, '=') + 1) == 0;
         return set ? Outcome::Worked : Outcome::Refused;
     }},

    // threads
    {"DOV0_InitializeMutex", Storage::None, Nothing,
     [] {
         pthread_mutex_t mutex;
         DOV0_InitializeMutex(&mutex);
         return is(pthread_mutex_trylock(&mutex) == 0);
     }},
    {"DOV0_InitializeCondVar", Storage::None, Nothing,
     [] {
         pthread_cond_t changed;
         DOV0_InitializeCondVar(&changed);
         return is(pthread_cond_signal(&changed) == 0);
     }},
    {"DOV0_ConditionTimedWait", Storage::None, Nothing,
     [] {
         pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
         pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
         pthread_mutex_lock(&mutex);
         const int32_t result = DOV0_ConditionTimedWait(&changed, &mutex, 0);
         pthread_mutex_unlock(&mutex);
         return is(result == ETIMEDOUT || result == 0);
     }},
    {"DOV0_CreateThread", Storage::Helpful, Nothing,
     [] {
         pthread_t thread;
         if (DOV0_CreateThread(endsAtOnce, nullptr, DOV0_THREAD_JOINABLE, &thread) != 0) {
             return Outcome::Refused;
         }
         const HeapFaultPause pause;
         return is(pthread_join(thread, nullptr) == 0);
     }},
    {"DOV0_SetCloExecFlag", Storage::None, Nothing,
     [] {
         const int descriptor = aSocket();
         const bool set = DOV0_SetCloExecFlag(descriptor) == 0 && fcntl(descriptor, F_GETFD) == FD_CLOEXEC;
         close(descriptor);
         return is(set);
     }},
    {"DOV0_strtok", Storage::None, Nothing,
     [] {
         char text[] = "a,b";
         const char *first = DOV0_strtok(text, ",");
         const char *second = DOV0_strtok(nullptr, ",");
         const char *third = DOV0_strtok(nullptr, ",");
         return is(first == text && second == text + 2 && third == nullptr);
     }},

    // product specification
    {"DOV0_InitializeProductSpec", Storage::Essential, Nothing,
     [] {
         return DOV0_InitializeProductSpec("inst1", 1) == 0
                    ? Outcome::Refused
                    : isKeptText(DOV0_QueryProductSpec(DOV0_PSF_INITCNFG_FILE_NAME), "DOVPCNFG_inst1");
     }},
    // The stream reads byte by byte without a buffer; a file that cannot be opened is no error message.
    {"DOV0_InitializeProductSpec", Storage::Helpful, SpecFile | Silent,
     [] {
         return DOV0_InitializeProductSpec(nullptr, 0) == 0
                    ? Outcome::Refused
                    : isKeptText(DOV0_QueryProductSpec(DOV0_PSF_DP_TO_START), "7,2");
     },
     "_file"},
    {"DOV0_QueryProductSpec", Storage::None, ProductSpec,
     [] { return isKeptText(DOV0_QueryProductSpec(DOV0_PSF_DCH_PORT_NUMBER), "1919"); }},
    {"DOV0_UpdateProductSpec", Storage::Essential, ProductSpec,
     [] {
         char value[20];
         std::snprintf(value, sizeof value, "X%d", count());
         const int32_t changed = DOV0_UpdateProductSpec(DOV0_PSF_NODE_TYPE, value);
         const HeapFaultPause pause;
         const char *now = DOV0_QueryProductSpec(DOV0_PSF_NODE_TYPE);
         if (changed == 0 && now == nullptr) { // the old text was freed first
             return DOV0_UpdateProductSpec(DOV0_PSF_NODE_TYPE, "again") == 1 ? Outcome::Refused
                                                                             : Outcome::Wrong;
         }
         return is(changed == 1 && now != nullptr && std::strcmp(now, value) == 0);
     }},
    {"DOV0_SetDPstartMode", Storage::None, Nothing,
     [] {
         DOV0_SetDPstartMode(0);
         return Outcome::Worked;
     }},

    // timestamps: the C library keeps the time zone's text, and reads it again where it could not
    {"DOV0_GetCorvelTime", Storage::Helpful, Nothing,
     [] {
         char buffer[DOV0_TIMESTAMP_SIZE];
         return is(DOV0_GetCorvelTime(buffer) == buffer && std::strspn(buffer, "0123456789") == 16);
     }},
    {"DOV0_ConvertTimeToCorvelTime", Storage::Helpful, Nothing,
     [] {
         const time_t when = count();
         char expected[30];
         std::snprintf(expected, sizeof expected, "07001010000%02d000", static_cast<int>(when % 60));
         return isText(DOV0_ConvertTimeToCorvelTime(&when, nullptr), expected);
     }},
    {"DOV0_GetTimeOfDay", Storage::None, Nothing,
     [] {
         DOV0_GetTimeOfDay();
         return Outcome::Worked;
     }},
    {"DOV0_GetCurrentDayTime", Storage::Helpful, Nothing,
     [] {
         const time_t when = 946684800; // the first second of 2000
         return isKeptText(DOV0_GetCurrentDayTime(&when), "100/01/01-00:00:00");
     }},
    {"DOV0_CorvelTimeToString", Storage::None, Nothing,
     [] {
         char text[DOV0_TIMESTAMP_TEXT_SIZE];
         return is(DOV0_CorvelTimeToString("1240115102030000", text) == 23);
     }},
    {"DOV0_CorvelTimeToWeekDay", Storage::None, Nothing,
     [] {
         char name[DOV0_WEEKDAY_MAX_LENGTH];
         return is(DOV0_CorvelTimeToWeekDay("1030615120000000", name) == 6);
     }},
    {"DOV0_StringToCorvelTime", Storage::Essential, Nothing,
     [] { return isText(DOV0_StringToCorvelTime("01/15/2024 10:20:30"), "1240115102030000"); }},
    {"DOV0_StringToCorvelTime", Storage::Helpful, Nothing,
     [] {
         char *text = DOV0_StringToCorvelTime("MONDAY JANUARY 5");
         const HeapFaultPause pause;
         const bool rightDay = text == nullptr || std::strcmp(text + 3, "0105000000000") == 0;
         return rightDay ? isBlock(text) : Outcome::Wrong;
     },
     "_thisYear"},

    // strings
    {"DOV0_ConvertStringToUpper", Storage::Essential, Nothing,
     [] {
         char text[] = "text";
         return isText(DOV0_ConvertStringToUpper(text, 1), "TEXT");
     }},
    {"DOV0_ConvertStringToUpper", Storage::None, Nothing,
     [] {
         char text[] = "text";
         return isKeptText(DOV0_ConvertStringToUpper(text, 0), "TEXT");
     },
     "_inPlace"},
    {"DOV0_RemoveCRandLF", Storage::None, Nothing,
     [] {
         char text[] = "abc\r\n";
         DOV0_RemoveCRandLF(text, DOV0_REMOVE_BOTH);
         return isKeptText(text, "abc");
     }},
    {"DOV0_TruncateFromLeft", Storage::None, Nothing,
     [] {
         char text[] = "abcdef";
         DOV0_TruncateFromLeft(text, 6, 4);
         return isKeptText(text, "cdef");
     }},
    {"DOV0_terminateString", Storage::None, Nothing,
     [] { return isKeptText(DOV0_terminateString("field   ", ' ', 8), "field"); }},
    {"DOV0_SubValidNameCharacter", Storage::None, Nothing,
     [] {
         char text[] = "a b";
         DOV0_SubValidNameCharacter(text);
         return isKeptText(text, "a_b");
     }},

    // base64
    {"DOV0_EncodeBase64", Storage::Essential, Nothing,
     [] {
         char *encoded = nullptr;
         const int32_t result = DOV0_EncodeBase64("Man", &encoded);
         return (result == 1) == (encoded != nullptr) ? isText(encoded, "TWFu") : Outcome::Wrong;
     }},
    {"DOV0_EncodeToBuffer", Storage::None, Nothing,
     [] {
         const DOV0_Base64Group group = {{'M', 'a', 'n', 0}, 3};
         char target[5] = "";
         DOV0_EncodeToBuffer(&group, target);
         return isKeptText(target, "TWFu");
     }},
    {"DOV0_EncodeRaw", Storage::None, Nothing,
     [] {
         unsigned char sextets[4] = {};
         DOV0_EncodeRaw(sextets, reinterpret_cast<const unsigned char *>("Man"));
         return is(sextets[0] == 19 && sextets[3] == 46);
     }},
    {"DOV0_DecodeBase64", Storage::Essential, Nothing,
     [] {
         char *decoded = nullptr;
         const int32_t result = DOV0_DecodeBase64("TWFu", &decoded);
         return (result == 1) == (decoded != nullptr) ? isText(decoded, "Man") : Outcome::Wrong;
     }},
    {"DOV0_DecodeToBuffer", Storage::None, Nothing,
     [] {
         const DOV0_Base64Group group = {{19, 22, 5, 46}, 4};
         char target[4] = "";
         DOV0_DecodeToBuffer(&group, target);
         return isKeptText(target, "Man");
     }},
    {"DOV0_DecodeRaw", Storage::None, Nothing,
     [] {
         const unsigned char sextets[4] = {19, 22, 5, 46};
         unsigned char bytes[3] = {};
         DOV0_DecodeRaw(bytes, sextets);
         return is(bytes[0] == 'M' && bytes[2] == 'n');
     }},

    // records, dumps, paths
    {"DOV0_EncipherRecord", Storage::None, Nothing,
     [] {
         char record[] = "record";
         return is(DOV0_EncipherRecord(record, 3) == record && std::strcmp(record, "record") != 0);
     }},
    {"DOV0_DecipherMetaRecord", Storage::None, Nothing,
     [] {
         char record[] = "record";
         return is(DOV0_DecipherMetaRecord(record, 3) == record && std::strcmp(record, "record") != 0);
     }},
    {"DOV0_ComputeCheckSum", Storage::Essential, Nothing,
     [] {
         const int32_t sum = DOV0_ComputeCheckSum("\1\2\3\4", 4, 1);
         return sum == 0 ? Outcome::Refused : is(sum == 0xFAF6);
     }},
    {"DOV0_PrintDump", Storage::None, Nothing,
     [] {
         DOV0_PrintDump(OidField, 0, sizeof OidField);
         return Outcome::Worked;
     }},
    {"DOV0_CheckPathSpec", Storage::Essential, Nothing,
     [] { return isText(DOV0_CheckPathSpec("/tmp"), "/tmp/"); }},
    {"DOV0_ConstructFullyQualifiedName", Storage::Essential, Nothing,
     [] { return isText(DOV0_ConstructFullyQualifiedName(nullptr, "x.dat"), "/var/agent/x.dat"); }},
    {"DOV0_CloseFile", Storage::None, Files,
     [] {
         FILE *stream = openUncounted(stage->lines);
         DOV0_CloseFile(&stream);
         return is(stream == nullptr);
     }},

    // BER
    {"DOV0_FormatBERlengthField", Storage::None, Nothing,
     [] {
         unsigned char buffer[5] = {};
         unsigned char *cursor = buffer;
         return is(DOV0_FormatBERlengthField(&cursor, 128) == 1 && cursor == buffer + 3);
     }},
    {"DOV0_FormatBERintegerType", Storage::None, Nothing,
     [] {
         unsigned char buffer[6] = {};
         unsigned char *cursor = buffer;
         return is(DOV0_FormatBERintegerType(&cursor, DOV0_ASN_INTEGER, 128) == 4);
     }},
    {"DOV0_FormatBERnullType", Storage::None, Nothing,
     [] {
         unsigned char buffer[2] = {};
         unsigned char *cursor = buffer;
         return is(DOV0_FormatBERnullType(&cursor) == 2);
     }},
    {"DOV0_FormatBERoctetstringType", Storage::None, Nothing,
     [] {
         unsigned char buffer[12] = {};
         unsigned char *cursor = buffer;
         return is(DOV0_FormatBERoctetstringType(&cursor, DOV0_ASN_OCTETSTRING, OidField, 10) == 12);
     }},
    // With the detail bit on there is a text of the value, without storage a shorter one.
    {"DOV0_ExtractBERfield", Storage::None, Nothing,
     [] {
         unsigned char field[] = {4, 3, 'a', 'b', 'c'};
         unsigned char *cursor = field;
         unsigned char *value = nullptr;
         uint32_t length = 0;
         return is(DOV0_ExtractBERfield(&cursor, &length, &value) == 4 && length == 3 && value == field + 2);
     }},
    {"DOV0_ExtractBERinteger", Storage::None, Nothing,
     [] {
         unsigned char field[] = {2, 2, 0xFF, 0x80};
         unsigned char *cursor = field;
         int32_t value = 0;
         return is(DOV0_ExtractBERinteger(&cursor, &value) == 1 && value == 65408);
     }},
    {"DOV0_GetASN1typeString", Storage::None, Nothing,
     [] { return isKeptText(DOV0_GetASN1typeString(0x30), "ASN_SEQUENCE"); }},
    {"DOV0_FormatOIDfromString", Storage::Essential, Nothing,
     [] {
         unsigned char *field = nullptr;
         int32_t size = -1;
         const int32_t result = DOV0_FormatOIDfromString("1.3.6.1.2.1.1.1.0", &field, &size);
         if (result == 1 && (size != 10 || std::memcmp(field, OidField, 10) != 0)) {
             return Outcome::Wrong;
         }
         return result == 1 || (field == nullptr && size == 0) ? isBlock(field) : Outcome::Wrong;
     }},
    {"DOV0_DecodeOIDfromBER", Storage::Essential, Nothing,
     [] {
         int32_t elements = -1;
         uint32_t *array = DOV0_DecodeOIDfromBER(OidField + 2, 8, &elements);
         return elements == (array != nullptr ? 9 : 0) ? isBlock(array) : Outcome::Wrong;
     }},
    {"DOV0_ConvertOIDtoString", Storage::Essential, Nothing,
     [] {
         const uint32_t elements[] = {1, 3, 6};
         return isText(DOV0_ConvertOIDtoString(elements, 3), "1.3.6");
     }},
    {"DOV0_FormatDataField", Storage::None, Nothing,
     [] {
         const int32_t value = 5;
         unsigned char record[14] = {};
         return is(DOV0_FormatDataField(record, record + 4, DOV0_DATA_INT_17, &value, 4, nullptr) == 10);
     }},
    {"DOV0_ExtractDataField", Storage::None, Nothing,
     [] {
         unsigned char field[] = {0, 0, 0, 10, 0, 17, 0, 0, 0, 5};
         unsigned char *cursor = field;
         return is(DOV0_ExtractDataField(&cursor, nullptr, nullptr, nullptr) == 17);
     }},
    {"DOV0_ExtractXMLfield", Storage::None, Nothing, [] { return is(DOV0_ExtractXMLfield(1) == 0); }},
    {"DOV0_DetermineNodeServiceType", Storage::Essential, Nothing,
     [] { return isText(DOV0_DetermineNodeServiceType(72), "Applications,Hosts"); }},

    // byte order and character sets
    {"DOV0_ConvertDataToLocal", Storage::None, Nothing,
     [] {
         char data[] = "\xC1";
         DOV0_ConvertDataToLocal(data, 1);
         return isKeptText(data, "A");
     }},
    {"DOV0_ConvertDataToNetwork", Storage::None, Nothing,
     [] {
         char data[] = "A\xE9";
         DOV0_ConvertDataToNetwork(data, 2);
         return isKeptText(data, "\xC1\x6F");
     }},
    {"DOV0_ConvertEBCDICtoASCII", Storage::None, Nothing,
     [] {
         char data[] = "\xC1";
         DOV0_ConvertEBCDICtoASCII(data, 1);
         return isKeptText(data, "A");
     }},
    {"DOV0_IsSourceASCII", Storage::None, Nothing, [] { return is(DOV0_IsSourceASCII("text", 4) == 1); }},
    {"DOV0_CheckCodeConversion", Storage::None, ICU,
     [] { return is(DOV0_CheckCodeConversion('A', nullptr) == 0); }},
    {"DOV0_ConvertShortEndian", Storage::None, Nothing,
     [] {
         char data[] = "12";
         DOV0_ConvertShortEndian(data);
         return isKeptText(data, "21");
     }},
    {"DOV0_ConvertLongEndian", Storage::None, Nothing,
     [] {
         char data[] = "1234";
         DOV0_ConvertLongEndian(data);
         return isKeptText(data, "4321");
     }},
    {"DOV0_CheckIntegerEndian", Storage::None, Nothing,
     [] {
         uint32_t integer = htonl(1);
         DOV0_CheckIntegerEndian(&integer, 4);
         return is(integer == 1);
     }},

    // unicode
    // A converter that cannot be opened leaves the one before; an operation that needs one opens it.
    {"DOV0_UTF8ConverterInitialization", Storage::Helpful, ICU,
     [] {
         DOV0_UTF8ConverterInitialization(nullptr);
         const HeapFaultPause pause;
         char output[4];
         return DOV0_ConvertUnicodeToUTF8(u"abc", 3, output, 4) == 3 ? Outcome::Worked : Outcome::Refused;
     }},
    {"DOV0_ConvertDataToUnicode", Storage::Essential, ICU,
     [] {
         char16_t *text = nullptr;
         int32_t units = -1;
         const int32_t result = DOV0_ConvertDataToUnicode("ibm-1047", "\xC1", 1, &text, &units);
         if (result == 0) {
             return text == nullptr && units == -1 ? Outcome::Refused : Outcome::Wrong;
         }
         return result == 1 && units == 1 && text[0] == u'A' ? isBlock(text) : Outcome::Wrong;
     }},
    {"DOV0_ConvertUnicodeToUTF8", Storage::FirstUse, ICU | Silent,
     [] {
         char output[4] = "";
         const int32_t result = DOV0_ConvertUnicodeToUTF8(u"abc", 3, output, 4);
         return result == 0 ? Outcome::Refused : isKeptText(output, "abc");
     }},
    {"DOV0_GetUTF8CharacterCount", Storage::FirstUse, ICU | Silent,
     [] {
         static const char *const text = "1234567890";
         char16_t *units = nullptr;
         const int32_t result = DOV0_GetUTF8CharacterCount(text, 10, &units);
         if (result == 0) {
             return units == nullptr ? Outcome::Refused : Outcome::Wrong;
         }
         return result == 10 && units[9] == u'0' ? isBlock(units) : Outcome::Wrong;
     }},
    {"DOV0_ConvertUTF8ToNative", Storage::Helpful, ICU,
     [] {
         char output[10] = "";
         const int32_t result = DOV0_ConvertUTF8ToNative("\xE2\x82\xAC", 3, output, sizeof output);
         return result == 0 ? Outcome::Refused : is(result == 3 && std::strcmp(output, "\xE2\x82\xAC") == 0);
     }},
    {"DOV0_MoveStringPointerByChar", Storage::None, Nothing,
     [] {
         static const char text[] = "a\xC3\xA9 b";
         return is(DOV0_MoveStringPointerByChar(text, 2) == text + 3);
     }},
    {"DOV0_FindChar", Storage::None, Nothing,
     [] {
         static const char text[] = {1, 0x41, 0, 0x41};
         return is(DOV0_FindChar(text, 4, "\0\x41", DOV0_UTF16BE, 1) == text + 2);
     }},
    {"DOV0_LNG2_GetFileEncoding", Storage::Helpful, Files | ICU | Silent,
     [] {
         int32_t length = -1;
         unsigned char mark[DOV0_BYTE_ORDER_MARK_SIZE] = {9, 9, 9, 9};
         const char *name = DOV0_LNG2_GetFileEncoding(stage->marked.c_str(), &length, mark);
         if (name == nullptr) {
             return length == 0 && mark[0] == 0 && mark[3] == 0 ? Outcome::Refused : Outcome::Wrong;
         }
         return length == 2 && mark[1] == 0xFE ? isKeptText(name, "UTF-16LE") : Outcome::Wrong;
     }},
    {"DOV0_LNG2_GetFileEncodingType", Storage::None, Nothing,
     [] { return is(DOV0_LNG2_GetFileEncodingType("UTF-16LE") == DOV0_UTF16LE); }},
    {"DOV0_Fgets", Storage::Helpful, Files | ICU,
     [] {
         FILE *stream = openUncounted(stage->marked);
         char line[100] = "";
         int32_t bytes = -1;
         const char *result = DOV0_Fgets(line, sizeof line, stream, &bytes, "ISO-8859-1", DOV0_UTF16LE, 1);
         closeUncounted(stream);
         if (bytes != 8) {
             return Outcome::Wrong;
         }
         return result == nullptr ? Outcome::Refused
                                  : is(result == line && std::strncmp(line, "\xC3\xBF", 2) == 0);
     }},
    {"DOV0_fgets", Storage::Helpful, Files,
     [] {
         FILE *stream = openUncounted(stage->lines);
         char line[100] = "";
         const char *result = DOV0_fgets(line, sizeof line, stream);
         closeUncounted(stream);
         return result == line ? isKeptText(line, "first\n") : Outcome::Wrong;
     }},

    // messages and console
    {"DOV0_LNG2_Message", Storage::Helpful, Bundle | ICU,
     [] {
         char text[100] = "before";
         DOV0_LNG2_Message(DOV0_MESSAGE_CLASS_V, text, sizeof text, 1, "node", nullptr, nullptr, nullptr,
                           "reason");
         if (std::strcmp(text, "Node node is down: reason") == 0) {
             return Outcome::Worked;
         }
         // A parameter that cannot be converted is empty.
         static const char *const others[] = {"", "Node  is down: reason",
                                              "Node node is down: ", "Node  is down: "};
         for (const char *other : others) {
             if (std::strcmp(text, other) == 0) {
                 return Outcome::Refused;
             }
         }
         return Outcome::Wrong;
     }},
    {"DOV0_LNG2_MsgSubparmToUTF_Util", Storage::Essential, ICU,
     [] {
         char16_t text[10] = u"before";
         DOV0_LNG2_MsgSubparmToUTF_Util(nullptr, text, 10, "after");
         return text[0] == u'b' ? Outcome::Refused : is(text[0] == u'a' && text[4] == u'r' && text[5] == 0);
     }},
    {"DOV0_ZTconsoleMessage", Storage::None, Nothing,
     [] { return is(DOV0_ZTconsoleMessage(nullptr, nullptr, "message") == 0); }},
    // A setting for the console's tool that cannot be stored does not hold the message up.
    {"DOV0_ZTconsoleMessage", Storage::Helpful, Files,
     [] {
         DOV0_SetDPstartMode(1);
         const int32_t status = DOV0_ZTconsoleMessage("c", "s", "message");
         if (status == DOV0_CONSOLE_NOT_SENT) {
             return Outcome::Refused;
         }
         return is(WIFEXITED(status) && WEXITSTATUS(status) == 3);
     },
     "_tool"},
    {"DOV0_CheckSystemCommandCodepage", Storage::None, Nothing,
     [] { return is(DOV0_CheckSystemCommandCodepage(1253, 0) == 851); }},
    {"DOV0_ConvertUTF8CommandToDOS", Storage::Essential, ICU,
     [] {
         char output[10] = "";
         const int32_t result = DOV0_ConvertUTF8CommandToDOS("\xC3\xA9", 2, output, sizeof output);
         return result == 0 ? Outcome::Refused : is(result == 2 && std::strncmp(output, "\x82 ", 2) == 0);
     }},
    {"DOV0_ConvertUTF8CommandToDOS", Storage::None, Nothing,
     [] {
         char output[10] = "";
         return is(DOV0_ConvertUTF8CommandToDOS("dir", 3, output, sizeof output) == 4);
     },
     "_ascii"},

    // hosts
    {"DOV0_GetHostByName", Storage::Essential, Nothing, [] { return isBlock(DOV0_GetHostByName(OwnName)); }},
    {"DOV0_GetHostByAddr", Storage::Essential, Nothing,
     [] {
         const in_addr_t address = inet_addr("192.0.2.7");
         return isBlock(DOV0_GetHostByAddr(&address));
     }},
    // An address without a name is remembered only where there is storage; the answer is the same.
    {"DOV0_GetHostByAddr", Storage::Helpful, Nothing,
     [] {
         const in_addr_t address = inet_addr("198.18.0.1");
         return is(DOV0_GetHostByAddr(&address) == nullptr);
     },
     "_unknown"},
    {"DOV0_ConvertNameToAddr", Storage::Essential, Nothing,
     [] {
         sockaddr_in address = {};
         const int32_t result = DOV0_ConvertNameToAddr(OwnName, 7, &address);
         if (address.sin_port != htons(7)) {
             return Outcome::Wrong;
         }
         if (result == 0) {
             return address.sin_addr.s_addr == 0 ? Outcome::Refused : Outcome::Wrong;
         }
         return is(address.sin_addr.s_addr == htonl(INADDR_LOOPBACK));
     }},
    {"DOV0_ConvertAddrToName", Storage::Essential, Nothing,
     [] {
         sockaddr_in address = {};
         address.sin_addr.s_addr = inet_addr("192.0.2.7");
         char *name = nullptr;
         const int32_t result = DOV0_ConvertAddrToName(&address, &name, DOV0_SHORT_NAME);
         return (result == 1) == (name != nullptr) ? isText(name, "host-7") : Outcome::Wrong;
     }},
    {"DOV0_ResolveAddressToName", Storage::Essential, Nothing,
     [] { return isText(DOV0_ResolveAddressToName("192.0.2.7"), "host-7.corp.example"); }},
    // Without storage for the domain the name stays without one.
    {"DOV0_LocalHostNameString", Storage::Helpful, Nothing,
     [] {
         const char *name = DOV0_LocalHostNameString();
         return name != nullptr && std::strcmp(name, "alpha") == 0 ? Outcome::Worked
                                                                   : isKeptText(name, OwnName);
     }},
    {"DOV0_LocalHostAddrString", Storage::Helpful, Nothing,
     [] { return isKeptText(DOV0_LocalHostAddrString(), "127.0.0.1"); }},
    {"DOV0_GetLocalDomainName", Storage::Essential, Nothing,
     [] { return isKeptText(DOV0_GetLocalDomainName(), "corp.example"); }},
    {"DOV0_GetLocalComputerName", Storage::None, Nothing,
     [] {
         char name[DOV0_COMPUTER_NAME_SIZE] = "";
         return is(DOV0_GetLocalComputerName(name) == 1 && name[0] != '\0');
     }},
    {"DOV0_GetLocalHostInfo", Storage::None, Nothing,
     [] {
         char name[DOV0_HOST_INFO_SIZE] = "";
         return is(DOV0_GetLocalHostInfo(name) == 1 && name[0] != '\0');
     }},
    {"DOV0_IsOwnHostName", Storage::Helpful, Nothing,
     [] { return DOV0_IsOwnHostName("ALPHA") == 1 ? Outcome::Worked : Outcome::Refused; }},
    {"DOV0_IsThisAddressString", Storage::None, Nothing,
     [] { return is(DOV0_IsThisAddressString("10.1.2.3") == 3); }},
    {"DOV0_IsThisFullyQualifiedName", Storage::None, Nothing,
     [] { return is(DOV0_IsThisFullyQualifiedName("a/b") == 1); }},

    // sockets
    // The local host's address is taken at the first open, and is 0 for good when there is none.
    {"DOV0_OpenLocalSocket", Storage::Helpful, Nothing,
     [] {
         sockaddr_in own = {};
         int32_t error = -1;
         const int32_t opened = DOV0_OpenLocalSocket(DOV0_SOCKET_DATAGRAM, 0, &own, DOV0_SOCKET_REUSE, &error,
                                                     DOV0_BIND_OWN_ADDRESS);
         close(opened);
         return is(opened > 0 && error == 0 &&
                   (own.sin_addr.s_addr == 0 || own.sin_addr.s_addr == htonl(INADDR_LOOPBACK)));
     }},
    {"DOV0_RetrieveSockPort", Storage::None, Nothing,
     [] {
         const int opened = aSocket();
         const int32_t port = DOV0_RetrieveSockPort(opened);
         close(opened);
         return is(port == 0);
     }},
    {"DOV0_SetSocketIoctl", Storage::None, Nothing,
     [] {
         const int opened = aSocket();
         int on = 1;
         const int32_t result = DOV0_SetSocketIoctl(opened, FIONBIO, &on);
         close(opened);
         return is(result == 0);
     }},
    {"DOV0_CloseTheSocket", Storage::None, Nothing, [] { return is(DOV0_CloseTheSocket(aSocket()) == 0); }},
    {"DOV0_WinSockInitialization", Storage::None, Nothing,
     [] { return is(DOV0_WinSockInitialization() == 1); }},

    // trace facility: it does without what it cannot have, and only a new configuration is refused
    {"TRC1_Sync", Storage::None, ColdTrace,
     [] {
         TRC1_Sync(&stage->host.block);
         return is(stage->host.block.generation != 0);
     }},
    {"TRC1_Event", Storage::None, Nothing,
     [] { return tracesOneLine([] { TRC1_Event(&stage->host.block, 1, TRC1_EVENT_ENTRY); }); }},
    {"TRC1_Printf", Storage::Helpful, Nothing,
     [] { return tracesOneLine([] { TRC1_Printf(&stage->host.block, 1, "%05000d\n", 1); }); }},
    {"TRC1_Printf", Storage::None, Nothing,
     [] { return tracesOneLine([] { TRC1_Printf(&stage->host.block, 1, "<%s>\n", OwnName); }); }, "_short"},
    {"TRC1_Dump", Storage::Helpful, Nothing,
     [] {
         static const unsigned char memory[2000] = {};
         TRC1_Dump(&stage->host.block, 1, memory, sizeof memory, "%02.2X");
         return Outcome::Worked;
     }},
    {"TRC1_Configure", Storage::Essential, Nothing,
     [] {
         const int32_t result = TRC1_Configure("error,dov0gsto=error", stage->traceName.c_str());
         return result == 0 ? Outcome::Worked : Outcome::Refused;
     }},

    // services
    {"PLT1_GetEnv", Storage::None, Nothing,
     [] { return isKeptText(PLT1_GetEnv("RPCB0_HOSTNAME", 0), "alpha"); }},
    {"PLT1_InitializeLock", Storage::None, Nothing,
     [] {
         PLT1_Lock lock = {};
         PLT1_InitializeLock(&lock);
         return is(lock.initialized == 1);
     }},
    {"PLT1_GetLock", Storage::None, Nothing,
     [] {
         PLT1_Lock lock = {};
         PLT1_InitializeLock(&lock);
         PLT1_GetLock(&lock);
         PLT1_ReleaseLock(&lock);
         return Outcome::Worked;
     }},
    {"PLT1_ReleaseLock", Storage::None, Nothing,
     [] {
         PLT1_Lock lock = {};
         PLT1_InitializeLock(&lock);
         PLT1_GetLock(&lock);
         PLT1_ReleaseLock(&lock);
         return is(pthread_mutex_trylock(&lock.mutex) == 0);
     }},
    {"PLT1_InitializeOnce", Storage::None, Nothing,
     [] {
         static int32_t control = 0;
         static int runs = 0;
         PLT1_InitializeOnce(
             &control, [](void *counted) { ++*static_cast<int *>(counted); }, &runs, "hostcode", 1);
         return is(runs == 1 && control < 0);
     }},
    {"PLT1_ThreadID", Storage::None, Nothing, [] { return is(PLT1_ThreadID() != 0); }},
    {"PLT1_GetTime", Storage::None, Nothing,
     [] {
         timespec now = {};
         PLT1_GetTime(&now);
         return is(now.tv_sec != 0);
     }},

    // language support, which reports by status alone
    {"LNG2_GetLocale", Storage::Essential, ICU | Silent,
     [] {
         int32_t status = -1;
         LNG2_Locale *locale = LNG2_GetLocale(nullptr, nullptr, nullptr, &status);
         if (locale == nullptr) {
             return status == U_MEMORY_ALLOCATION_ERROR ? Outcome::Refused : Outcome::Wrong;
         }
         const Outcome outcome = isKeptText(locale->name, "en_US");
         LNG2_ReleaseLocale(locale);
         return outcome;
     }},
    {"LNG2_GetThreadLocale", Storage::Essential, ICU | Silent,
     [] {
         int32_t status = -1;
         LNG2_Locale *locale = LNG2_GetThreadLocale(&status);
         if (locale == nullptr) {
             return status == U_MEMORY_ALLOCATION_ERROR ? Outcome::Refused : Outcome::Wrong;
         }
         const Outcome outcome = is(locale->codepage == 1252);
         LNG2_ReleaseLocale(locale);
         return outcome;
     }},
    {"LNG2_ReleaseLocale", Storage::None, Nothing,
     [] {
         LNG2_Locale *locale = nullptr;
         {
             const HeapFaultPause pause;
             locale = LNG2_GetLocale(nullptr, nullptr, nullptr, nullptr);
         }
         LNG2_ReleaseLocale(locale);
         return is(locale != nullptr);
     }},
    {"LNG2_GetCodepageId", Storage::Helpful, ICU | Silent,
     [] {
         int32_t status = -1;
         const int32_t codepage = LNG2_GetCodepageId("windows-1252", &status);
         if (codepage == 0) {
             return status > 0 ? Outcome::Refused : Outcome::Wrong;
         }
         return is(codepage == 1252 && status <= 0);
     }},
    {"LNG2_GetCodepageName", Storage::Helpful, ICU | Silent,
     [] {
         char name[LNG2_CODEPAGE_NAME_SIZE] = "before";
         if (LNG2_GetCodepageName(1252, name, sizeof name) != 0) {
             return std::strcmp(name, "before") == 0 ? Outcome::Refused : Outcome::Wrong;
         }
         return isKeptText(name, "windows-1252");
     }},
    {"LNG2_TranslateString", Storage::Essential, ICU | Silent,
     [] {
         char output[10] = "";
         int32_t consumed = -1;
         int32_t status = -1;
         const int32_t length =
             LNG2_TranslateString(850, output, sizeof output, 1208, "\xC3\xA9", 2, &consumed, 0, &status);
         if (length == 0) {
             return status > 0 ? Outcome::Refused : Outcome::Wrong;
         }
         return status == 0 && consumed == 2 ? isKeptText(output, "\x82") : Outcome::Wrong;
     }},
    {"LNG2_ResourceOpen", Storage::Helpful, Bundle | ICU | Silent,
     [] {
         LNG2_Locale locale = {0, 0, "en_US"};
         int32_t status = -1;
         LNG2_ResourceBundle *bundle = LNG2_ResourceOpen(stage->bundle.c_str(), &locale, &status);
         if (bundle == nullptr) {
             return status > 0 ? Outcome::Refused : Outcome::Wrong;
         }
         LNG2_ResourceClose(bundle);
         return Outcome::Worked;
     }},
    {"LNG2_GetStringByKey", Storage::None, Bundle | ICU | Silent,
     [] {
         LNG2_Locale locale = {0, 0, "en_US"};
         int32_t status = -1;
         LNG2_ResourceBundle *bundle = nullptr;
         {
             const HeapFaultPause pause;
             bundle = LNG2_ResourceOpen(stage->bundle.c_str(), &locale, &status);
         }
         const char16_t *text = LNG2_GetStringByKey(bundle, "DOVPV2", nullptr, &status);
         const bool found = text != nullptr && text[0] == u's' && status <= 0;
         const HeapFaultPause pause;
         LNG2_ResourceClose(bundle);
         return is(found);
     }},
    {"LNG2_ResourceClose", Storage::None, Bundle | ICU,
     [] {
         LNG2_Locale locale = {0, 0, "en_US"};
         LNG2_ResourceBundle *bundle = nullptr;
         {
             const HeapFaultPause pause;
             bundle = LNG2_ResourceOpen(stage->bundle.c_str(), &locale, nullptr);
         }
         LNG2_ResourceClose(bundle);
         return is(bundle != nullptr);
     }},
    {"AGF_CreateMessage", Storage::None, Nothing,
     [] {
         AGF_CreateMessage("s", "c", "message", 0);
         return Outcome::Worked;
     }},
};

// How far the process has come when the request fails.
enum class State {
    ColdICU, // neither ICU nor the function has been used: ICU keeps a first failure for good, and may lose blocks
    FirstUse, // the function has not
    Warm,     // the function has worked before
};

struct Run {
    const Case *testCase;
    State state;
    const char *levels;
    bool laterOnesToo;
    int n;
};

std::ostream &operator<<(std::ostream &stream, const Run &run)
{
    constexpr const char *States[] = {"cold ICU", "first use", "later use"};
    return stream << *run.testCase << ", " << States[static_cast<int>(run.state)] << ", trace levels <"
                  << run.levels << ">, request " << run.n << (run.laterOnesToo ? " and all later ones" : "");
}

constexpr int Reached = 0;
constexpr int NotReached = 100;
constexpr int Failed = 101;

void useICU()
{
    for (const char *const name :
         {static_cast<const char *>(nullptr), "UTF-8", "ibm-1047", "windows-1252", "ibm-850"}) {
        UErrorCode status = U_ZERO_ERROR;
        ucnv_close(ucnv_open(name, &status));
    }
    for (const char *const package : {static_cast<const char *>(nullptr), "/nowhere/nothing"}) {
        UErrorCode status = U_ZERO_ERROR;
        ures_close(ures_open(package, "en", &status));
    }
}

void setUp(const Run &run)
{
    stage = new Stage;
    setenv("DOV_TRACE", run.levels, 1);
    stage->trace.nameInEnvironment();
    const unsigned needs = run.testCase->needs;
    if ((needs & Files) != 0) {
        stage->marked = stage->files.write("marked", std::string("\xFF\xFE"
                                                                 "a\0b\0\n\0",
                                                                 8));
        stage->lines = stage->files.write("lines", "\xEF\xBB\xBF"
                                                   "first\nsecond\n");
        const std::string tool = stage->files.write("AGFMESG", "#!/bin/sh\nexit 3\n");
        chmod(tool.c_str(), 0755);
        setenv("PATH", (stage->files.path + ":" + std::getenv("PATH")).c_str(), 1);
    }
    // ICU misbehaves when the storage for its first default locale fails; every process asks for that at its start.
    uloc_getDefault();
    if (run.state != State::ColdICU) {
        useICU();
    }
    if ((needs & ColdTrace) == 0) {
        TRC1_Sync(&stage->host.block);
    }
    if ((needs & SpecFile) != 0) {
        stage->specification.emplace(
            std::vector<std::string>{"PRODUCT_CODE=OV", "DP_TO_START=snmp,file", "NODE_TYPE=XX"});
    }
    if ((needs & ProductSpec) != 0) {
        EXPECT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
    }
    if ((needs & Bundle) != 0) {
        stage->messages = std::getenv("ALLOCATION_TEST_MESSAGES");
        stage->bundle = stage->messages + "/dovpmsg";
        setenv("DOVP_RB_PATH", stage->messages.c_str(), 1);
        if (std::strcmp(run.testCase->function, "DOV0_LNG2_Message") == 0) {
            EXPECT_EQ(DOV0_InitializeProductSpec(nullptr, 1), 1);
        }
    }
}

bool callWithFailure(const Run &run, Outcome &outcome)
{
    const auto call = [&] { outcome = run.testCase->call(); };
    return run.laterOnesToo ? withHeapFailureFrom(run.n, call) : withHeapFailure(run.n, call);
}

// One request of one call, in the process that this runs in. Returns whether the call came that far.
bool tryOne(const Run &run)
{
    const Case &testCase = *run.testCase;
    const bool untraced = run.levels[0] == '\0';
    if (run.state == State::Warm) {
        EXPECT_EQ(testCase.call(), Outcome::Worked);
    }
    const size_t tracedBefore = traced().size();
    Outcome outcome = Outcome::Wrong;
    const bool reached = callWithFailure(run, outcome);
    const size_t tracedBytes = traced().size() - tracedBefore;
    EXPECT_NE(outcome, Outcome::Wrong);
    if (!reached) {
        EXPECT_EQ(outcome, Outcome::Worked);
        return false;
    }
    if (testCase.storage == Storage::None) {
        EXPECT_FALSE(untraced) << "storage is requested";
        EXPECT_EQ(outcome, Outcome::Worked); // only the trace wanted storage
    }
    const bool coldICU = run.state == State::ColdICU;
    if (testCase.storage == Storage::Essential && untraced && !coldICU) {
        EXPECT_EQ(outcome, Outcome::Refused);
    }
    if (outcome == Outcome::Refused && !untraced && (testCase.needs & Silent) == 0) {
        EXPECT_GT(tracedBytes, 0U) << "no error message";
    }

    const bool maySayNoForGood =
        coldICU || (run.state == State::FirstUse && testCase.storage == Storage::FirstUse);
    const Outcome second = testCase.call();
    EXPECT_TRUE(second == Outcome::Worked || (second == Outcome::Refused && maySayNoForGood))
        << "the second call";

    if (!coldICU && seesAllRequests) {
        // Nothing is kept for later any more, whether the request fails or not.
        EXPECT_EQ(heapBlocksKeptBy([&] { callWithFailure(run, outcome); }), 0) << "blocks are lost";
        EXPECT_EQ(heapBlocksKeptBy([&] { outcome = testCase.call(); }), 0) << "blocks are lost";
    }
    return true;
}

int failures()
{
    return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

// The same in a process of its own, so that nothing has been used before.
int statusOf(const Run &run)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        alarm(20); // a lock that is left held
        const int failuresBefore = failures();
        setUp(run);
        const bool reached = tryOne(run);
        const int status = failures() > failuresBefore ? Failed : reached ? Reached : NotReached;
        delete stage;
        std::fflush(nullptr);
        // ICU loses the name of a bundle that it reads for the first time when it cannot store the bundle's path.
        const bool losesInICU = run.state == State::FirstUse && (run.testCase->needs & Bundle) != 0;
        if (run.state == State::ColdICU || losesInICU) {
            _exit(status);
        }
        std::exit(status); // where leaks are looked for
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << run << " was ended by signal " << WTERMSIG(status);
    return WIFEXITED(status) ? WEXITSTATUS(status) : Failed;
}

// How many requests the call makes; each has failed once.
int requestsOf(Run run)
{
    for (run.n = 1;; ++run.n) {
        const int status = statusOf(run);
        if (status == NotReached) {
            return run.n - 1;
        }
        if (status != Reached) {
            ADD_FAILURE() << run;
            return run.n;
        }
    }
}

class AllocationFailure : public testing::TestWithParam<Case> {};

} // namespace

// The resolver answers from areas of its own.
extern "C" hostent *gethostbyname(const char *name)
{
    static in_addr_t address = htonl(INADDR_LOOPBACK);
    static char *addresses[] = {reinterpret_cast<char *>(&address), nullptr};
    static hostent record;
    h_errno = HOST_NOT_FOUND;
    record = {const_cast<char *>(name), nullptr, AF_INET, sizeof address, addresses};
    return std::strncmp(name, "alpha", 5) == 0 ? &record : nullptr;
}

extern "C" hostent *gethostbyaddr(const void *address, socklen_t /*length*/, int /*family*/)
{
    static char name[] = "host-7.corp.example";
    static hostent record = {name, nullptr, AF_INET, 4, nullptr};
    h_errno = HOST_NOT_FOUND;
    return static_cast<const unsigned char *>(address)[0] == 192 ? &record : nullptr;
}

TEST_P(AllocationFailure, IsHandled)
{
    for (const auto &[name, value] : {std::pair{"LC_ALL", "en_US.UTF-8"},
                                      {"TZ", "UTC0"},
                                      {"RPCB0_HOSTNAME", "alpha"},
                                      {"DOV_TCPIP_DOMAIN_NAME", "corp.example"},
                                      {"DOV_WORK_PATH", "/var/agent"}}) {
        setenv(name, value, 1);
    }
    for (const char *const name :
         {"DOV_DCH_HOSTNAME", "DOV_DP_HOSTNAME", "DOV_USE_DOMAIN_NAME", "DOV_HOSTENT_DATA_SIZE",
          "DOV_TRACE_LIMIT", "DOV_OMC", "DOV_PRODSPEC_PATH", "DOV_PRODSPEC_NAME"}) {
        unsetenv(name);
    }
    const MessageFolder messages;
    messages.add("root", "DOVPV1 { \"Node {0} is down: {4}\" }\nDOVPV2 { \"second\" }");
    setenv("ALLOCATION_TEST_MESSAGES", messages.path().c_str(), 1);

    const Case &testCase = GetParam();
    int untraced = 0;
    int all = 0;
    for (const char *const levels : {"", "error", "all"}) {
        for (const State state : {State::ColdICU, State::FirstUse, State::Warm}) {
            if (state == State::ColdICU && (testCase.needs & ICU) == 0) {
                continue;
            }
            for (const bool laterOnesToo : {false, true}) {
                const int requests = requestsOf({&testCase, state, levels, laterOnesToo, 1});
                all += requests;
                untraced += levels[0] == '\0' ? requests : 0;
            }
        }
    }
    if (testCase.storage == Storage::None) {
        EXPECT_EQ(untraced, 0);
    } else if (seesAllRequests) {
        EXPECT_GT(untraced, 0) << "no storage is requested";
    }
    std::printf("%d failing requests, %d of them without tracing\n", all, untraced);
}

INSTANTIATE_TEST_SUITE_P(Library, AllocationFailure, testing::ValuesIn(Cases), [](const auto &instance) {
    return std::string(instance.param.function) + instance.param.variant;
});

TEST(AllocationFailures, AreTriedForEveryFunction)
{
    std::set<std::string> tried;
    for (const Case &testCase : Cases) {
        tried.insert(testCase.function);
    }
    for (const auto &[name, manual] : exportedFunctions()) {
        EXPECT_TRUE(tried.erase(name) == 1) << name;
    }
    EXPECT_EQ(tried, std::set<std::string>());
}
