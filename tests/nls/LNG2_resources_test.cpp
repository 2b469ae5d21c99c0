#include "nls/language_stand_in.h"
#include "nls/message_folder.h"
#include "support/heap_faults.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <unicode/uloc.h>
#include <vector>

namespace {

void setDefaultLocale(const char *name)
{
    UErrorCode error = U_ZERO_ERROR;
    uloc_setDefault(name, &error);
}

struct Locale : LNG2_Locale {
    explicit Locale(const char *localeName) : LNG2_Locale{}
    {
        std::snprintf(name, sizeof name, "%s", localeName);
    }
};

// What a key gives in a locale, or the name of the status that was met.
std::string fetched(const std::string &path, const char *localeName, const char *key)
{
    Locale locale(localeName);
    int32_t status = -1;
    LNG2_ResourceBundle *bundle = LNG2_ResourceOpen(path.c_str(), &locale, &status);
    if (bundle == nullptr) {
        EXPECT_GT(status, 0);
        return std::string("open: ") + u_errorName(static_cast<UErrorCode>(status));
    }
    EXPECT_LE(status, 0);
    int32_t length = -1;
    const char16_t *text = LNG2_GetStringByKey(bundle, key, &length, &status);
    std::string result;
    if (text == nullptr) {
        EXPECT_GT(status, 0);
        EXPECT_EQ(length, 0);
        result = std::string("key: ") + u_errorName(static_cast<UErrorCode>(status));
    } else {
        EXPECT_LE(status, 0);
        EXPECT_EQ(text[length], 0);
        for (int32_t i = 0; i < length; ++i) {
            result += static_cast<char>(text[i]);
        }
    }
    LNG2_ResourceClose(bundle);
    return result;
}

} // namespace

TEST(LNG2_ResourceOpen, FallsBackToParentsThenToTheDefaultThenToRoot)
{
    setDefaultLocale("de_DE");
    const MessageFolder messages;
    messages.add("root", "A { \"root A\" } B { \"root B\" }");
    messages.add("fr", "A { \"fr A\" }");
    messages.add("fr_CA", "B { \"fr_CA B\" }");
    EXPECT_EQ(fetched(messages.bundle(), "fr_CA", "B"), "fr_CA B");
    EXPECT_EQ(fetched(messages.bundle(), "fr_CA", "A"), "fr A");
    EXPECT_EQ(fetched(messages.bundle(), "fr_FR", "A"), "fr A");
    EXPECT_EQ(fetched(messages.bundle(), "fr_FR", "B"), "root B");
    EXPECT_EQ(fetched(messages.bundle(), "ja", "A"), "root A");
    EXPECT_EQ(fetched(messages.bundle(), "fr", "C"), "key: U_MISSING_RESOURCE_ERROR");
}

TEST(LNG2_ResourceOpen, ReportsMissingAndUnusableBundles)
{
    setDefaultLocale("de_DE");
    const MessageFolder messages;
    EXPECT_EQ(fetched(messages.bundle(), "de", "A"), "open: U_MISSING_RESOURCE_ERROR");
    EXPECT_EQ(fetched("/nowhere/at/all", "de", "A"), "open: U_MISSING_RESOURCE_ERROR");
    messages.addRaw("it", "");
    messages.addRaw("es", "this is no bundle at all, but it is a file");
    EXPECT_EQ(fetched(messages.bundle(), "it", "A"), "open: U_MISSING_RESOURCE_ERROR");
    EXPECT_EQ(fetched(messages.bundle(), "es", "A"), "open: U_MISSING_RESOURCE_ERROR");

    int32_t status = -1;
    Locale locale("de");
    EXPECT_EQ(LNG2_ResourceOpen(nullptr, &locale, &status), nullptr);
    EXPECT_EQ(status, U_ILLEGAL_ARGUMENT_ERROR);
    EXPECT_EQ(LNG2_ResourceOpen("", &locale, &status), nullptr);
    EXPECT_EQ(status, U_ILLEGAL_ARGUMENT_ERROR);
    EXPECT_EQ(LNG2_ResourceOpen(messages.bundle().c_str(), nullptr, nullptr), nullptr);
    LNG2_ResourceClose(nullptr);
}

TEST(LNG2_ResourceOpen, FindsABundleThatWasMissingBefore)
{
    setDefaultLocale("en");
    const MessageFolder first;
    first.add("root", "A { \"root A\" }");
    EXPECT_EQ(fetched(first.bundle(), "xx", "A"), "root A");
    const MessageFolder second;
    second.add("root", "A { \"other A\" }");
    EXPECT_EQ(fetched(second.bundle(), "xx", "A"), "other A");
    EXPECT_EQ(fetched(first.bundle(), "xx", "A"), "root A");
}

TEST(LNG2_ResourceOpen, ReadsABundleFromItsFilesOnce)
{
    MessageFolder messages;
    messages.add("root", "A { \"root A\" }");
    messages.add("de", "A { \"de A\" }");
    EXPECT_EQ(fetched(messages.bundle(), "de", "A"), "de A");
    std::filesystem::remove_all(messages.path());
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(fetched(messages.bundle(), "de", "A"), "de A");
    }
}

TEST(LNG2_ResourceOpen, NeedsNothingForABundleThatItKeeps)
{
    const MessageFolder messages;
    messages.add("root", "A { \"root A\" }");
    EXPECT_EQ(fetched(messages.bundle(), "de", "A"), "root A");
    const std::string path = messages.bundle();
    Locale locale("de");
    int32_t status = -1;
    LNG2_ResourceBundle *bundle = nullptr;
    EXPECT_EQ(heapRequestsOf([&] { bundle = LNG2_ResourceOpen(path.c_str(), &locale, &status); }), 0);
    ASSERT_NE(bundle, nullptr);
    LNG2_ResourceClose(bundle);
}

TEST(LNG2_ResourceOpen, KeepsABoundedNumberOfBundles)
{
    const MessageFolder messages;
    messages.add("root", "A { \"root A\" }");
    Locale held("held");
    int32_t status = -1;
    LNG2_ResourceBundle *bundle = LNG2_ResourceOpen(messages.bundle().c_str(), &held, &status);
    ASSERT_NE(bundle, nullptr);
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(fetched(messages.bundle(), ("x" + std::to_string(i)).c_str(), "A"), "root A");
    }
    int32_t length = 0;
    EXPECT_NE(LNG2_GetStringByKey(bundle, "A", &length, &status), nullptr); // still in use, so still there
    EXPECT_EQ(length, 6);
    LNG2_ResourceClose(bundle);
}

TEST(LNG2_ResourceOpen, FailsCleanlyWithoutStorage)
{
    const MessageFolder messages;
    messages.add("root", "A { \"root A\" }");
    EXPECT_EQ(fetched(messages.bundle(), "de", "A"), "root A"); // what ICU keeps from its first use
    const auto open = [](const std::string &path, int32_t &status) {
        Locale locale("de");
        return LNG2_ResourceOpen(path.c_str(), &locale, &status);
    };
    // ICU's own requests come first, and it leaks when one of them fails; the layer's own comes last. Paths of the
    // same length that differ, because what was opened before is not opened again.
    const std::string counted = messages.path() + "/./dovpmsg";
    const std::string failing = messages.path() + "//.dovpmsg";
    int32_t status = -1;
    LNG2_ResourceBundle *bundle = nullptr;
    const int requests = heapRequestsOf([&] { bundle = open(counted, status); });
    LNG2_ResourceClose(bundle);
    std::filesystem::rename(messages.bundle(), messages.path() + "/.dovpmsg");
    EXPECT_TRUE(withHeapFailure(requests, [&] { bundle = open(failing, status); }));
    EXPECT_EQ(bundle, nullptr);
    EXPECT_EQ(status, U_MEMORY_ALLOCATION_ERROR);
    EXPECT_EQ(fetched(failing, "de", "A"), "root A");
}

TEST(LNG2_GetStringByKey, ReportsBadArgumentsAndKeysThatAreNoText)
{
    const MessageFolder messages;
    messages.add("root", "A { \"root A\" } T { X { \"inside\" } }");
    EXPECT_EQ(fetched(messages.bundle(), "root", "T"), "key: U_RESOURCE_TYPE_MISMATCH");
    EXPECT_EQ(fetched(messages.bundle(), "root", nullptr), "key: U_ILLEGAL_ARGUMENT_ERROR");
    int32_t status = -1;
    int32_t length = -1;
    EXPECT_EQ(LNG2_GetStringByKey(nullptr, "A", &length, &status), nullptr);
    EXPECT_EQ(status, U_ILLEGAL_ARGUMENT_ERROR);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(LNG2_GetStringByKey(nullptr, "A", nullptr, nullptr), nullptr);
}

TEST(LNG2_GetStringByKey, ServesThreadsAtOnce)
{
    const MessageFolder messages;
    messages.add("root", "A { \"root A\" } B { \"root B\" }");
    messages.add("de", "A { \"de A\" }");
    const std::string path = messages.bundle();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 300; ++i) {
                wrong +=
                    fetched(path, "de", "A") != "de A" || fetched(path, "de_AT", "B") != "root B" ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(bundlesOut(), 0);
}
