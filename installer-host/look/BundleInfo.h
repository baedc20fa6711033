#pragma once

#include <string>

namespace host {

/// What a bundle says of itself in its Info.plist. Texts that it does not give are empty.
struct BundleInfo {
    std::string identifier;
    std::string version;  ///< the one for users, or the build's where there is none
};

/// Reads it from the bundle at `path`. Throws nothing but std::bad_alloc: a file that cannot be read gives no texts.
BundleInfo readBundleInfo(const std::string& path);

}  // namespace host
