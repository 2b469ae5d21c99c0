// The library's functions beside what else does the same work on the machine, in one run, with tracing off: the C
// library, ICU, OpenSSL and an SNMP library. Each pair works on the same data; a pair whose results differ says so.
#include "dov0610.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cctype>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <iconv.h>
#include <openssl/evp.h>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/umsg.h>
#include <unicode/unistr.h>
#include <unicode/ures.h>
#include <unicode/ustring.h>
#include <vector>

#include <net-snmp/net-snmp-config.h> // before the next one

#include <net-snmp/net-snmp-includes.h>

namespace {

// A text of words, none of whose bytes is zero.
std::string sampleText(size_t length)
{
    std::string text;
    while (text.size() < length) {
        text += "sysUpTime is 123456789 and the Interface ";
    }
    text.resize(length);
    return text;
}

// German, Greek and Japanese, about as many bytes as asked for.
std::string sampleUTF8(size_t length)
{
    std::string text;
    while (text.size() < length) {
        text += "Größe \u03B1\u03B2\u03B3 \u65E5\u672C\u8A9E plain ";
    }
    return text;
}

// ---- storage and environment

void storage(benchmark::State &state)
{
    for ([[maybe_unused]] const auto step : state) {
        void *block = DOV0_GetStorage(static_cast<int32_t>(state.range(0)));
        benchmark::DoNotOptimize(block);
        DOV0_FreeStorage(&block);
    }
}

void storageByCalloc(benchmark::State &state)
{
    for ([[maybe_unused]] const auto step : state) {
        void *block = std::calloc(1, static_cast<size_t>(state.range(0)));
        benchmark::DoNotOptimize(block);
        std::free(block);
    }
}

void environment(benchmark::State &state)
{
    for ([[maybe_unused]] const auto step : state) {
        benchmark::DoNotOptimize(DOV0_GetEnv("PATH", nullptr));
    }
}

void environmentByGetenv(benchmark::State &state)
{
    for ([[maybe_unused]] const auto step : state) {
        benchmark::DoNotOptimize(std::getenv("PATH"));
    }
}

// ---- text

template <typename Tokenizer> void tokens(benchmark::State &state, Tokenizer next)
{
    const std::string text = sampleText(4000);
    std::vector<char> copy(text.size() + 1);
    size_t count = 0;
    for ([[maybe_unused]] const auto step : state) {
        std::memcpy(copy.data(), text.c_str(), copy.size());
        for (char *token = next(copy.data()); token != nullptr; token = next(nullptr)) {
            ++count;
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(count));
}

void tokenizer(benchmark::State &state)
{
    tokens(state, [](char *text) { return DOV0_strtok(text, " "); });
}

void tokenizerByStrtokR(benchmark::State &state)
{
    char *position = nullptr;
    tokens(state, [&position](char *text) { return strtok_r(text, " ", &position); });
}

void upperCase(benchmark::State &state)
{
    std::string text = sampleText(1000);
    for ([[maybe_unused]] const auto step : state) {
        benchmark::DoNotOptimize(DOV0_ConvertStringToUpper(text.data(), 0));
    }
    state.SetBytesProcessed(state.iterations() * 1000);
}

void upperCaseByToupper(benchmark::State &state)
{
    std::string text = sampleText(1000);
    for ([[maybe_unused]] const auto step : state) {
        for (char *c = text.data(); *c != '\0'; ++c) {
            *c = static_cast<char>(std::toupper(static_cast<unsigned char>(*c)));
        }
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(state.iterations() * 1000);
}

void base64Encode(benchmark::State &state)
{
    const std::string text = sampleText(static_cast<size_t>(state.range(0)));
    for ([[maybe_unused]] const auto step : state) {
        char *output = nullptr;
        DOV0_EncodeBase64(text.c_str(), &output);
        benchmark::DoNotOptimize(output);
        DOV0_FreeStorage(&output);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void base64EncodeByOpenssl(benchmark::State &state)
{
    const std::string text = sampleText(static_cast<size_t>(state.range(0)));
    for ([[maybe_unused]] const auto step : state) {
        auto *output = static_cast<unsigned char *>(std::calloc(1, text.size() / 3 * 4 + 5));
        EVP_EncodeBlock(output, reinterpret_cast<const unsigned char *>(text.data()),
                        static_cast<int>(text.size()));
        benchmark::DoNotOptimize(output);
        std::free(output);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

std::string encodedText(size_t length)
{
    const std::string text = sampleText(length);
    std::string encoded(length / 3 * 4 + 5, '\0');
    encoded.resize(static_cast<size_t>(EVP_EncodeBlock(reinterpret_cast<unsigned char *>(encoded.data()),
                                                       reinterpret_cast<const unsigned char *>(text.data()),
                                                       static_cast<int>(length))));
    return encoded;
}

void base64Decode(benchmark::State &state)
{
    const std::string encoded = encodedText(static_cast<size_t>(state.range(0)));
    for ([[maybe_unused]] const auto step : state) {
        char *output = nullptr;
        DOV0_DecodeBase64(encoded.c_str(), &output);
        benchmark::DoNotOptimize(output);
        DOV0_FreeStorage(&output);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void base64DecodeByOpenssl(benchmark::State &state)
{
    const std::string encoded = encodedText(static_cast<size_t>(state.range(0)));
    for ([[maybe_unused]] const auto step : state) {
        auto *output = static_cast<unsigned char *>(std::calloc(1, encoded.size()));
        EVP_DecodeBlock(output, reinterpret_cast<const unsigned char *>(encoded.data()),
                        static_cast<int>(encoded.size()));
        benchmark::DoNotOptimize(output);
        std::free(output);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

// ---- time

void timestamp(benchmark::State &state)
{
    char buffer[17];
    for ([[maybe_unused]] const auto step : state) {
        benchmark::DoNotOptimize(DOV0_GetCorvelTime(buffer));
    }
}

void timestampByStrftime(benchmark::State &state)
{
    char buffer[17];
    for ([[maybe_unused]] const auto step : state) {
        const time_t now = std::time(nullptr);
        tm parts;
        localtime_r(&now, &parts);
        std::strftime(buffer, sizeof buffer, "%Y%m%d%H%M%S0", &parts);
        benchmark::DoNotOptimize(buffer);
    }
}

void looseDate(benchmark::State &state)
{
    for ([[maybe_unused]] const auto step : state) {
        char *result = DOV0_StringToCorvelTime("JUN 15 2003 12:30:59");
        benchmark::DoNotOptimize(result);
        DOV0_FreeStorage(&result);
    }
}

// Of a form that has to be known beforehand.
void looseDateByStrptime(benchmark::State &state)
{
    for ([[maybe_unused]] const auto step : state) {
        tm parts = {};
        auto *result = static_cast<char *>(std::calloc(1, 17));
        strptime("JUN 15 2003 12:30:59", "%b %d %Y %H:%M:%S", &parts);
        std::strftime(result, 17, "%Y%m%d%H%M%S0", &parts);
        benchmark::DoNotOptimize(result);
        std::free(result);
    }
}

// ---- SNMP

void berInteger(benchmark::State &state)
{
    unsigned char buffer[16];
    int32_t value = 123456;
    for ([[maybe_unused]] const auto step : state) {
        unsigned char *end = buffer;
        DOV0_FormatBERintegerType(&end, 0x02, value);
        unsigned char *next = buffer;
        DOV0_ExtractBERinteger(&next, &value);
        benchmark::DoNotOptimize(value);
    }
}

void berIntegerBySnmpLibrary(benchmark::State &state)
{
    unsigned char buffer[16];
    long value = 123456;
    for ([[maybe_unused]] const auto step : state) {
        size_t size = sizeof buffer;
        asn_build_int(buffer, &size, ASN_INTEGER, &value, sizeof value);
        size_t left = sizeof buffer;
        unsigned char type = 0;
        asn_parse_int(buffer, &left, &type, &value, sizeof value);
        benchmark::DoNotOptimize(value);
    }
}

constexpr char Identifier[] = "1.3.6.1.2.1.2.2.1.10.1000123";

void objectIdentifier(benchmark::State &state)
{
    for ([[maybe_unused]] const auto step : state) {
        unsigned char *field = nullptr;
        int32_t size = 0;
        DOV0_FormatOIDfromString(Identifier, &field, &size);
        benchmark::DoNotOptimize(field);
        DOV0_FreeStorage(&field);
    }
}

void objectIdentifierBySnmpLibrary(benchmark::State &state)
{
    for ([[maybe_unused]] const auto step : state) {
        oid parts[MAX_OID_LEN];
        size_t count = MAX_OID_LEN;
        auto *field = static_cast<unsigned char *>(std::calloc(1, 128));
        size_t size = 128;
        read_objid(Identifier, parts, &count);
        asn_build_objid(field, &size, ASN_OBJECT_ID, parts, count);
        benchmark::DoNotOptimize(field);
        std::free(field);
    }
}

// ---- character data

template <typename Convert> void ebcdic(benchmark::State &state, Convert convert)
{
    std::vector<char> data(4096);
    for (size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<char>(0xC1 + i % 9); // letters
    }
    for ([[maybe_unused]] const auto step : state) {
        convert(data);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * 4096);
}

void ebcdicToAscii(benchmark::State &state)
{
    ebcdic(state, [](std::vector<char> &data) {
        DOV0_ConvertEBCDICtoASCII(data.data(), static_cast<int32_t>(data.size()));
    });
}

void ebcdicToAsciiByIconv(benchmark::State &state)
{
    iconv_t converter = iconv_open("ISO-8859-1", "IBM1047");
    ebcdic(state, [converter](std::vector<char> &data) {
        char *from = data.data();
        char *to = data.data();
        size_t inLeft = data.size();
        size_t outLeft = data.size();
        iconv(converter, &from, &inLeft, &to, &outLeft);
    });
    iconv_close(converter);
}

void toUTF8(benchmark::State &state)
{
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(sampleUTF8(1000));
    char output[4096];
    for ([[maybe_unused]] const auto step : state) {
        DOV0_ConvertUnicodeToUTF8(text.getBuffer(), text.length(), output, sizeof output);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * text.length() * 2);
}

void toUTF8ByIconv(benchmark::State &state)
{
    icu::UnicodeString text = icu::UnicodeString::fromUTF8(sampleUTF8(1000));
    char output[4096];
    iconv_t converter = iconv_open("UTF-8", U_IS_BIG_ENDIAN != 0 ? "UTF-16BE" : "UTF-16LE");
    for ([[maybe_unused]] const auto step : state) {
        auto *from = reinterpret_cast<char *>(text.getBuffer(text.length()));
        text.releaseBuffer();
        char *to = output;
        size_t inLeft = static_cast<size_t>(text.length()) * 2;
        size_t outLeft = sizeof output;
        iconv(converter, &from, &inLeft, &to, &outLeft);
        benchmark::ClobberMemory();
    }
    iconv_close(converter);
    state.SetBytesProcessed(state.iterations() * text.length() * 2);
}

void dataToUnicode(benchmark::State &state)
{
    const std::string data = sampleText(100);
    for ([[maybe_unused]] const auto step : state) {
        char16_t *units = nullptr;
        int32_t count = 0;
        DOV0_ConvertDataToUnicode("ISO-8859-1", data.data(), 100, &units, &count);
        benchmark::DoNotOptimize(units);
        DOV0_FreeStorage(&units);
    }
}

void dataToUnicodeByIconv(benchmark::State &state)
{
    std::string data = sampleText(100);
    for ([[maybe_unused]] const auto step : state) {
        iconv_t converter = iconv_open("UTF-16LE", "ISO-8859-1");
        auto *units = static_cast<char *>(std::calloc(1, 200));
        char *from = data.data();
        char *to = units;
        size_t inLeft = 100;
        size_t outLeft = 200;
        iconv(converter, &from, &inLeft, &to, &outLeft);
        benchmark::DoNotOptimize(units);
        std::free(units);
        iconv_close(converter);
    }
}

void stepCharacters(benchmark::State &state)
{
    const std::string text = sampleUTF8(1000);
    for ([[maybe_unused]] const auto step : state) {
        benchmark::DoNotOptimize(DOV0_MoveStringPointerByChar(text.c_str(), 600));
    }
}

void stepCharactersByMbrlen(benchmark::State &state)
{
    const std::string text = sampleUTF8(1000);
    std::setlocale(LC_CTYPE, "C.UTF-8");
    for ([[maybe_unused]] const auto step : state) {
        const char *position = text.c_str();
        mbstate_t shift = {};
        for (int i = 0; i < 600; ++i) {
            position += std::max<size_t>(mbrlen(position, MB_CUR_MAX, &shift), 1);
        }
        benchmark::DoNotOptimize(position);
    }
}

// The newline at the end of a text of 4,000 units, in which its byte stands in many other units.
std::u16string searchedText()
{
    std::u16string text(4000, u'\u0A41');
    text.back() = u'\n';
    return text;
}

std::string bytesOf(const std::u16string &text)
{
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit >> 8);
        bytes += static_cast<char>(unit & 0xFF);
    }
    return bytes;
}

void findNewline(benchmark::State &state)
{
    const std::string bytes = bytesOf(searchedText());
    for ([[maybe_unused]] const auto step : state) {
        benchmark::DoNotOptimize(
            DOV0_FindChar(bytes.data(), static_cast<int32_t>(bytes.size()), "\0\n", DOV0_UTF16BE, 1));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}

void findNewlineByLoop(benchmark::State &state)
{
    const std::string bytes = bytesOf(searchedText());
    for ([[maybe_unused]] const auto step : state) {
        const char *found = nullptr;
        for (size_t i = 0; i + 1 < bytes.size() && found == nullptr; i += 2) {
            found = bytes[i] == '\0' && bytes[i + 1] == '\n' ? &bytes[i] : nullptr;
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}

// ---- messages

void operatorMessage(benchmark::State &state)
{
    char text[512];
    for ([[maybe_unused]] const auto step : state) {
        DOV0_LNG2_Message(DOV0_MESSAGE_CLASS_S, text, sizeof text, 403, "192.0.2.1", "genErr", "2", nullptr,
                          nullptr);
        benchmark::DoNotOptimize(text);
    }
    if (text[0] == '\0') {
        state.SkipWithError("no message: DOVP_RB_PATH has to name the folder of the catalogue");
    }
}

// What a program would do with ICU alone.
void operatorMessageByIcu(benchmark::State &state)
{
    const char *folder = std::getenv("DOVP_RB_PATH");
    const std::string path = std::string(folder != nullptr ? folder : ".") + "/dovpmsg";
    char text[512] = "";
    for ([[maybe_unused]] const auto step : state) {
        UErrorCode status = U_ZERO_ERROR;
        UResourceBundle *bundle = ures_open(path.c_str(), nullptr, &status);
        int32_t length = 0;
        const UChar *pattern = ures_getStringByKey(bundle, "DOVPS403", &length, &status);
        UChar parameters[3][513];
        u_uastrcpy(parameters[0], "192.0.2.1");
        u_uastrcpy(parameters[1], "genErr");
        u_uastrcpy(parameters[2], "2");
        UChar message[2048];
        const int32_t units = u_formatMessage("en_US", pattern, length, message, 2048, &status, parameters[0],
                                              parameters[1], parameters[2]);
        UConverter *converter = ucnv_open(nullptr, &status);
        ucnv_fromUChars(converter, text, sizeof text, message, units, &status);
        ucnv_close(converter);
        ures_close(bundle);
        benchmark::DoNotOptimize(text);
        if (U_FAILURE(status)) {
            state.SkipWithError(u_errorName(status));
            break;
        }
    }
}

} // namespace

BENCHMARK(storage)->Arg(64)->Arg(4096);
BENCHMARK(storageByCalloc)->Arg(64)->Arg(4096);
BENCHMARK(environment);
BENCHMARK(environmentByGetenv);
BENCHMARK(tokenizer);
BENCHMARK(tokenizerByStrtokR);
BENCHMARK(upperCase);
BENCHMARK(upperCaseByToupper);
BENCHMARK(base64Encode)->Arg(30)->Arg(3000);
BENCHMARK(base64EncodeByOpenssl)->Arg(30)->Arg(3000);
BENCHMARK(base64Decode)->Arg(30)->Arg(3000);
BENCHMARK(base64DecodeByOpenssl)->Arg(30)->Arg(3000);
BENCHMARK(timestamp);
BENCHMARK(timestampByStrftime);
BENCHMARK(looseDate);
BENCHMARK(looseDateByStrptime);
BENCHMARK(berInteger);
BENCHMARK(berIntegerBySnmpLibrary);
BENCHMARK(objectIdentifier);
BENCHMARK(objectIdentifierBySnmpLibrary);
BENCHMARK(ebcdicToAscii);
BENCHMARK(ebcdicToAsciiByIconv);
BENCHMARK(toUTF8);
BENCHMARK(toUTF8ByIconv);
BENCHMARK(dataToUnicode);
BENCHMARK(dataToUnicodeByIconv);
BENCHMARK(stepCharacters);
BENCHMARK(stepCharactersByMbrlen);
BENCHMARK(findNewline);
BENCHMARK(findNewlineByLoop);
BENCHMARK(operatorMessage);
BENCHMARK(operatorMessageByIcu);

BENCHMARK_MAIN();
