// A folder of resource bundles, compiled by ICU's own tool from what a test writes.
#ifndef DOV0610_TESTS_MESSAGE_FOLDER_H
#define DOV0610_TESTS_MESSAGE_FOLDER_H

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

class MessageFolder {
public:
    MessageFolder()
    {
        char name[] = "/tmp/dov0_messages_XXXXXX";
        folder = mkdtemp(name);
        std::filesystem::create_directory(folder / "dovpmsg");
    }
    ~MessageFolder() { std::filesystem::remove_all(folder); }
    MessageFolder(const MessageFolder &) = delete;
    MessageFolder &operator=(const MessageFolder &) = delete;

    // Compiles a bundle; contents are the entries in genrb's source format.
    void add(const std::string &locale, const std::string &contents) const
    {
        const std::filesystem::path source = folder / (locale + ".txt");
        std::ofstream(source) << locale << " {\n" << contents << "\n}\n";
        const std::string command =
            GENRB " --quiet --encoding UTF-8 --destdir " + bundle() + " " + source.string() + " > /dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0) << command; // NOLINT: a test's own command
    }

    // Puts bytes where a bundle should be.
    void addRaw(const std::string &locale, const std::string &bytes) const
    {
        std::ofstream(folder / "dovpmsg" / (locale + ".res"), std::ios::binary) << bytes;
    }

    std::string path() const { return folder.string(); }
    std::string bundle() const { return (folder / "dovpmsg").string(); }

private:
    std::filesystem::path folder;
};

#endif
