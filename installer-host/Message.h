#pragma once

#include <cstdio>
#include <string>

namespace host {

/// Tells the user something on standard error; standard output is for the report alone.
inline void say(const std::string& message) {
    std::fprintf(stderr, "installer-host: %s\n", message.c_str());
}

}  // namespace host
