#pragma once

#include <array>
#include <cstddef>
#include <sstream>
#include <string>

namespace host {

/// A matrix has this many cases at most.
constexpr std::size_t MOST_CASES = 10000;

/// The parts of the name of a matrix's case, PRODUCT/LANGUAGE/STATUS. Missing ones are empty.
using CaseParts = std::array<std::string, 3>;

inline CaseParts partsOf(const std::string& name) {
    CaseParts parts;
    std::istringstream stream(name);
    std::getline(stream, parts[0], '/');
    std::getline(stream, parts[1], '/');
    std::getline(stream, parts[2], '\0');
    return parts;
}

inline std::string nameOf(const CaseParts& parts) {
    return parts[0] + "/" + parts[1] + "/" + parts[2];
}

}  // namespace host
