// A product specification file for one test, in a folder of its own, and the environment that names it.
//
//     const ProductSpecFile file({"PRODUCT_CODE=OV"});
//     EXPECT_EQ(DOV0_InitializeProductSpec(nullptr, 0), 1);
#ifndef DOV0610_TESTS_PRODUCT_SPEC_FILE_H
#define DOV0610_TESTS_PRODUCT_SPEC_FILE_H

#include "dov0610.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// A record, its line end included, as it stands in a file under this number.
inline std::string enciphered(const std::string &record, uint32_t number)
{
    std::string text = record;
    DOV0_EncipherRecord(text.data(), static_cast<int32_t>(static_cast<uint32_t>(record.size()) * number));
    return text;
}

class ProductSpecFile {
public:
    static constexpr char Name[] = "SPEC";

    // Records get a line end each and follow a good first line.
    explicit ProductSpecFile(const std::vector<std::string> &records)
    {
        std::string contents = "//PSF\n";
        uint32_t number = 0;
        for (const std::string &record : records) {
            contents += enciphered(record + "\n", ++number);
        }
        create(contents);
    }

    static ProductSpecFile withContents(const std::string &contents) { return ProductSpecFile(contents, 0); }

    ~ProductSpecFile()
    {
        unlink(path().c_str());
        rmdir(folder.c_str());
        unsetenv("DOV_PRODSPEC_PATH");
        unsetenv("DOV_PRODSPEC_NAME");
    }
    ProductSpecFile(const ProductSpecFile &) = delete;
    ProductSpecFile &operator=(const ProductSpecFile &) = delete;

    std::string path() const { return folder + "/" + Name; }

    // Writes the file anew.
    void write(const std::string &contents) const
    {
        std::ofstream(path(), std::ios::binary)
            .write(contents.data(), static_cast<std::streamsize>(contents.size()));
    }

private:
    ProductSpecFile(const std::string &contents, int /*distinguishes it*/) { create(contents); }

    void create(const std::string &contents)
    {
        char pattern[] = "/tmp/prodspec.XXXXXX";
        if (mkdtemp(pattern) == nullptr) {
            std::abort();
        }
        folder = pattern;
        write(contents);
        setenv("DOV_PRODSPEC_PATH", (folder + "/").c_str(), 1);
        setenv("DOV_PRODSPEC_NAME", Name, 1);
    }

    std::string folder;
};

// Runs a part of a test in a process of its own, for what can happen only once in a process. Its failures are
// printed and fail the test.
inline void inProcessOfItsOwn(const std::function<void()> &part)
{
    fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        part();
        std::exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS) << "status " << status;
}

#endif
