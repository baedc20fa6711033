// Reads text files and says how many lines each has: paths, files, formatting and exceptions.
//
//     file_report FILE...

#include <algorithm>
#include <cstdio>
#include <vector>

#include "CvBase/Util/Exception/FileIO.h"
#include "CvBase/Util/File.h"
#include "CvBase/common/common_path.h"
#include "CvBase/common/common_string.h"

namespace {

struct Contents {
    unsigned long long bytes = 0;
    long long lines = 0;
};

Contents readContents(const FilePath& path) {
    constexpr unsigned long long LARGEST_BLOCK = 65536;
    Util::File file(path);
    file.Open(Util::File::Read);
    Contents contents;
    contents.bytes = file.Size().Value();
    std::vector<unsigned char> block;
    for (unsigned long long left = contents.bytes; left > 0; left -= block.size()) {
        block.resize(static_cast<std::size_t>(std::min(left, LARGEST_BLOCK)));
        file.ReadBlock(block);
        contents.lines += std::count(block.begin(), block.end(), '\n');
    }
    file.Close();
    return contents;
}

String report(const FilePath& path) {
    const Contents contents = readContents(path);
    return String("%1 in %2: %3 lines, %4 bytes\n")
        .Arg(path.GetFilename())
        .Arg(path.GetFolder().ToString())
        .Arg(contents.lines)
        .Arg(contents.bytes);
}

}  // namespace

int main(int argc, char** argv) {
    int failures = 0;
    for (int i = 1; i < argc; ++i) {
        try {
            std::fputs(report(FilePath(argv[i], false)).CStr(), stdout);
        } catch (const Util::Exception::FileIO& failure) {
            std::fputs((failure.ToString() + "\n").CStr(), stderr);
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}
