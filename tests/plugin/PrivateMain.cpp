// The main program of tests that work on the machine's own paths (/Library, /Applications): runs itself again in a
// private root, where they are the test's own and empty.

#include "tests/support/PrivateRoot.h"
#include "tests/support/Test.h"

int main(int argc, char** argv) {
    const bool listing = argc > 1 && std::strcmp(argv[1], "--gtest_list_tests") == 0;
    if (listing || std::getenv("IN_PRIVATE_ROOT") != nullptr) {
        testing::InitGoogleTest(&argc, argv);
        return RUN_ALL_TESTS();
    }
    std::vector<std::string> command{std::filesystem::read_symlink("/proc/self/exe")};
    command.insert(command.end(), argv + 1, argv + argc);
    test::PrivateRoot root;
    test::ProcessOptions options;
    options.set = {{"IN_PRIVATE_ROOT", "1"}};
    options.unset = {"DISPLAY", "WAYLAND_DISPLAY"};
    // googletest captures standard error in a file in /tmp.
    const test::ProcessResult result = test::run(root.wrap(command, {"--bind", "/tmp", "/tmp"}), options);
    std::fputs(result.out.c_str(), stdout);
    std::fputs(result.err.c_str(), stderr);
    return result.exitStatus;
}
