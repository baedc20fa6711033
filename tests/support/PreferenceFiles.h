#pragma once

// What the tests of property lists and of preferences see in files and folders.

#include <endian.h>

#include "tests/support/Test.h"

namespace test {

/// The last `size` bytes of the number, the most significant one first.
inline std::string bigEndian(std::uint64_t number, unsigned size = 8) {
    number = htobe64(number << 8 * (8 - size));
    return std::string(reinterpret_cast<const char*>(&number), size);
}

/// What `expression` is in Python, with `p` the dictionary that the property list file holds.
inline std::string python(const std::string& expression, const std::string& file) {
    const std::string script =
        "import plistlib,sys,datetime\np=plistlib.load(open(sys.argv[1],'rb'))\nprint(" + expression + ")";
    const ProcessResult result = run({"python3", "-c", script, file});
    return result.exitStatus == 0 ? result.out.substr(0, result.out.size() - 1) : result.err;
}

/// Writes a file with Python: `value` is an expression for a property list, `format` BINARY or XML.
inline void writeWithPython(const std::string& file, const std::string& value, const std::string& format) {
    fs::create_directories(fs::path(file).parent_path());
    const std::string script = "import plistlib,sys,datetime\nplistlib.dump(" + value +
                               ",open(sys.argv[1],'wb'),fmt=plistlib.FMT_" + format + ")";
    const ProcessResult result = run({"python3", "-c", script, file});
    if (result.exitStatus != 0) {
        throw std::runtime_error(result.err);
    }
}

/// The names in the folder, sorted.
inline std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace test
