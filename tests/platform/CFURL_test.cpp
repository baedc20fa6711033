#include <Carbon/Files.h>
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/CFSupport.h"
#include "tests/support/TempDir.h"

namespace {

using cv::CFReference;
using test::url;

CFReference<CFURLRef> fromString(CFStringRef path) {
    return CFReference<CFURLRef>(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, path, kCFURLPOSIXPathStyle, false));
}

std::optional<std::string> pathOf(const CFReference<CFURLRef>& place, CFIndex size = 5000) {
    std::vector<UInt8> buffer(static_cast<std::size_t>(size));
    if (!place || !CFURLGetFileSystemRepresentation(place.get(), true, buffer.data(), size)) {
        return std::nullopt;
    }
    return reinterpret_cast<const char*>(buffer.data());
}

TEST(CFURL, GivesBackThePath) {
    for (const bool isDirectory : {false, true}) {
        for (const char* path : {"/", "/a b/%41/#?;=&+@:!$'()*,[]", "/caf\xC3\xA9", "/\xFF\xFE no text", "/a/../b/./c",
                                 "//double//slash", "/back\\slash", "/\x01\x7F\t\n\"<>|^`{}~", "/Icon\r"}) {
            EXPECT_EQ(pathOf(url(path, isDirectory)), path);
        }
    }
    EXPECT_EQ(pathOf(fromString(CFSTR("/caf\xC3\xA9/\xE2\x82\xAC"))), "/caf\xC3\xA9/\xE2\x82\xAC");
    EXPECT_EQ(pathOf(url("/tmp//", false)), "/tmp");
    EXPECT_EQ(pathOf(url("///", true)), "/");
    EXPECT_EQ(pathOf(url("some/file", false)), std::filesystem::current_path() / "some/file");
    EXPECT_EQ(pathOf(url("/abc", true), 5), "/abc");
    EXPECT_EQ(pathOf(url("/abc", true), 4), std::nullopt) << "no room for the end";
}

TEST(CFURL, RefusesWhatIsNoPath) {
    EXPECT_FALSE(url(""));
    EXPECT_FALSE(url(std::string("/a\0b", 4)));
    EXPECT_FALSE(fromString(nullptr));
    EXPECT_FALSE(fromString(CFSTR("")));
    EXPECT_FALSE(fromString(test::makeString({u"/a\xD800", 3}).get()));
    EXPECT_EQ(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, CFSTR("a:b"), 1, false), nullptr);
}

TEST(CFURL, FindsFilesAndFoldersHoweverItIsWritten) {
    const test::TempDir folder;
    test::writeFile(folder / "file", "x");
    std::filesystem::create_symlink("file", folder / "link");
    std::filesystem::create_symlink("nowhere", folder / "dangling");
    FSRef ref;
    for (const bool isDirectory : {false, true}) {
        EXPECT_TRUE(CFURLGetFSRef(url(folder / "link", isDirectory).get(), &ref));
        EXPECT_TRUE(CFURLGetFSRef(url(folder.path(), isDirectory).get(), &ref));
        EXPECT_FALSE(CFURLGetFSRef(url(folder / "dangling", isDirectory).get(), &ref));
    }
}

}  // namespace
