#include "tests/support/Process.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string_view>
#include <system_error>

#include "platform/Descriptor.h"

namespace test {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// An open file in memory, at its beginning.
cv::Descriptor memoryFile(const std::string& bytes) {
    cv::Descriptor file(memfd_create("test", MFD_CLOEXEC));
    if (!file.isOpen() || cv::writeAll(file.get(), bytes) != 0 || lseek(file.get(), 0, SEEK_SET) != 0) {
        fail("memfd_create");
    }
    return file;
}

std::string readToEnd(const cv::Descriptor& file) {
    std::string bytes;
    if ((errno = cv::readAll(file.get(), std::numeric_limits<std::size_t>::max() - 1, bytes)) != 0) {
        fail("read");
    }
    return bytes;
}

/// The kind of processor that a program is for, as its ELF header has it; empty for every other file.
std::string processorOf(const std::string& program) {
    Elf64_Ehdr header{};
    const bool isElf = std::ifstream(program).read(reinterpret_cast<char*>(&header), offsetof(Elf64_Ehdr, e_version)) &&
                       std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
    return isElf ? std::to_string(header.e_ident[EI_CLASS]) + " " + std::to_string(header.e_machine) : "";
}

[[noreturn]] void runChild(const std::vector<std::string>& command, const ProcessOptions& options) {
    for (const std::string& name : options.unset) {
        unsetenv(name.c_str());
    }
    for (const auto& [name, value] : options.set) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    const bool ready = (options.workingFolder.empty() || chdir(options.workingFolder.c_str()) == 0) &&
                       (options.user == 0 || (setgid(options.user) == 0 && setuid(options.user) == 0));
    if (ready) {
        std::vector<std::string> arguments = startable(command);
        std::vector<char*> argv;
        argv.reserve(arguments.size() + 1);
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        execvp(argv[0], argv.data());
    }
    std::perror(command[0].c_str());
    _exit(127);
}

pid_t forked() {
    const pid_t child = fork();
    if (child < 0) {
        fail("fork");
    }
    return child;
}

/// Waits for the end of `child`: its exit status, or 128 + the signal that ended it.
int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

std::vector<std::string> startable(std::vector<std::string> command) {
    const std::string_view emulator = CV_EMULATOR;
    const std::string processor = emulator.empty() ? "" : processorOf(command[0]);
    if (!processor.empty() && processor == processorOf("/proc/self/exe")) {
        command.insert(command.begin(), std::string(emulator));
    }
    return command;
}

ProcessResult run(const std::vector<std::string>& command, const ProcessOptions& options) {
    // A pipe for one of the outputs, so that this waits for every process that the program leaves behind.
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        fail("pipe2");
    }
    const cv::Descriptor in = memoryFile(options.in), out = memoryFile(""), err(ends[0]);
    cv::Descriptor childsErr(ends[1]);
    const pid_t child = forked();
    if (child == 0) {
        dup2(in.get(), STDIN_FILENO);
        dup2(out.get(), STDOUT_FILENO);
        dup2(childsErr.get(), STDERR_FILENO);
        runChild(command, options);
    }
    childsErr = cv::Descriptor();
    ProcessResult result;
    result.err = readToEnd(err);
    result.exitStatus = waitFor(child);
    lseek(out.get(), 0, SEEK_SET);
    result.out = readToEnd(out);
    return result;
}

int endOfCopy(const std::function<int()>& work) {
    const pid_t child = forked();
    if (child == 0) {
        constexpr unsigned MAX_SECONDS = 120;  // far more than any work takes on a slow machine
        alarm(MAX_SECONDS);
        int exitStatus = -1;
        try {
            exitStatus = work();
        } catch (...) {  // the caller sees the exit status 255
        }
        _exit(exitStatus);
    }
    return waitFor(child);
}

bool holdsInACopy(const std::function<bool()>& check) {
    return endOfCopy([&] { return check() ? 0 : 1; }) == 0;
}

bool holdsForOrdinaryUser(const std::function<bool()>& check) {
    constexpr unsigned NOBODY = 65534;
    return holdsInACopy([&] {
        const bool isOrdinary = geteuid() != 0 || (setgid(NOBODY) == 0 && setuid(NOBODY) == 0);
        return isOrdinary && check();
    });
}

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

}  // namespace test
