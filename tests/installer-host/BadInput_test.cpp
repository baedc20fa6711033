#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/installer-host/HostSupport.h"

namespace {

using namespace test;
using nlohmann::json;
using testing::HasSubstr;

namespace fs = std::filesystem;

/// Puts something else in the place of a file or folder.
void spoil(const fs::path& path, const std::string& how) {
    if (how == "closed") {
        fs::permissions(path, fs::perms::none);
        return;
    }
    const bool isFolder = fs::is_directory(path);
    fs::rename(path, path.string() + ".away");
    if (how == "other" && isFolder) {
        writeFile(path, "not a folder");
    } else if (how == "other") {
        fs::create_directory(path);
    } else if (how == "link") {
        fs::create_symlink(path.string() + ".away", path);
    } else if (how == "dangling") {
        fs::create_symlink("nowhere", path);
    } else if (how == "FIFO") {
        ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
    } else if (how == "empty") {
        writeFile(path, "");
    }
}

/// The lines of this program's own on standard error that are no advice.
std::vector<std::string> messagesIn(const std::string& err) {
    std::vector<std::string> messages;
    for (std::size_t at = err.find("installer-host: "); at != std::string::npos;
         at = err.find("installer-host: ", at + 1)) {
        messages.push_back(err.substr(at, err.find('\n', at) - at));
    }
    return messages;
}

/// Each part of a bundle in each way that it can be wrong, for a user to whom a closed one is closed.
TEST(BadInput, OfABundleHasOneClearLine) {
    const std::string parts[] = {"", "/Contents", "/Contents/Info.plist", "/Contents/Linux",
                                 "/Contents/Linux/CorvaneInstall"};
    const std::pair<std::string, const char*> ways[] = {
        {"missing", "No such file or directory"},
        {"closed", "Permission denied"},
        {"other", "(Not|not) a "},
        {"dangling", "No such file or directory"},
        {"FIFO", "(Not|not) a "},
        {"empty", ""},
        {"link", ""},
    };
    const OrdinaryUser user;
    for (const std::string& part : parts) {
        for (const auto& [how, reason] : ways) {
            SCOPED_TRACE(how + " " + part);
            const InstallRoot root;
            const TempDir folder;
            const std::string bundle = folder / "Bad.bundle";
            fs::copy(PLUGIN_BUNDLE, bundle, fs::copy_options::recursive);
            user.own(root.path());
            user.own(folder.path());
            const bool isFolder = fs::is_directory(bundle + part);
            if (isFolder && how == "empty") {
                continue;
            }
            spoil(bundle + part, how);
            const ProcessResult result = user.runHost(
                {"run", "--product=5100", "--timeout=20", "--format=json", "--root=" + root.path(), bundle});
            const json report = json::parse(result.out);
            const std::vector<std::string> messages = messagesIn(result.err);
            if (how == "link") {
                EXPECT_EQ(result.exitStatus, 0) << result.err;
                continue;
            }
            EXPECT_EQ(result.exitStatus, 3);
            EXPECT_EQ(report["error"]["status"], 3);
            ASSERT_EQ(messages.size(), 1U) << result.err;
            EXPECT_THAT(messages[0], testing::ContainsRegex(reason));
            EXPECT_THAT(messages[0], HasSubstr(fs::path(bundle + part).filename().string()));
            if (how == "closed") {
                fs::permissions(bundle + part, fs::perms::owner_all);
            }
        }
    }
}

}  // namespace
