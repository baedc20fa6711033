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

std::vector<unsigned char> readWhole(const FilePath& path) {
    Util::File file(path);
    file.Open(Util::File::Read);
    std::vector<unsigned char> bytes(file.Size().Value());
    file.ReadBlock(bytes);
    file.Close();
    return bytes;
}

String report(const FilePath& path) {
    const std::vector<unsigned char> bytes = readWhole(path);
    const long long lines = std::count(bytes.begin(), bytes.end(), '\n');
    return String("%1 in %2: %3 lines, %4 bytes\n")
        .Arg(path.GetFilename())
        .Arg(path.GetFolder().ToString())
        .Arg(lines)
        .Arg(static_cast<unsigned long long>(bytes.size()));
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
