#pragma once

#include <string>
#include <string_view>

namespace test {

/// A new empty folder, removed with all that is in it at the end of the scope.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// The folder's absolute path, without a trailing slash.
    const std::string& path() const { return path_; }

    /// The path of `name` in the folder; nothing is created.
    std::string operator/(std::string_view name) const;

private:
    std::string path_;
};

/// Writes `bytes` to the file at `path`, in place of what it held, making missing folders on the way.
void writeFile(const std::string& path, std::string_view bytes);

/// The bytes of the file at `path`; throws std::runtime_error when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace test
