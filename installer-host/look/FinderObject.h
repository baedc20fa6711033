#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "installer-host/look/RootFolder.h"

namespace host {

/// The objects that an installation sets the Finder flags of: the vendor's folder and the icon file in it.
constexpr const char* FINDER_OBJECTS[] = {"/Applications/Corvane", "/Applications/Corvane/Icon\r"};

/// The Finder information of a file or folder.
struct FinderObject {
    std::string path;
    bool exists = false;
    std::string problem;      ///< why the Finder flags cannot be read, to end a sentence with; empty when they can
    std::uint16_t flags = 0;  ///< 0 for an object that has no Finder information
};

/// What the value of the attribute says of the object at `path`; null when it has none.
FinderObject finderObject(const std::string& path, const std::string* attribute);

/// Looks at FINDER_OBJECTS. Throws nothing but std::bad_alloc.
std::vector<FinderObject> readFinderObjects(const RootFolder& root);

}  // namespace host
