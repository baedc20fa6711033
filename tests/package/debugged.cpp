// A program for gdb to stop in: texts and paths of every kind.

#include "CvBase/common/common_std.h"

[[gnu::noinline]] void stopHere(const String* texts, const FilePath& file, const FolderPath& folder) {
    asm volatile("" : : "r"(texts), "r"(&file), "r"(&folder) : "memory");
}

int main() {
    using std::string_literals::operator""s;
    const String shared("two own \"me\"");
    const String texts[] = {String(),
                            "",
                            "report.txt",
                            shared,
                            StringFrom("nul\0inside"s),
                            "caf\xC3\xA9 \xE9 \xC3 end\n",
                            StringFrom(std::string(100000, 'x'))};
    const FilePath file("/tmp/file", false);
    const FolderPath folder("/tmp", false);
    stopHere(texts, file, folder);
}
