#pragma once

// What nearly every test uses: googletest, the everyday parts of the standard library, and a place and a process of
// its own. A test includes beside it what it is about.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Process.h"
#include "tests/support/StandardError.h"
#include "tests/support/TempDir.h"
#include "tests/support/Threads.h"

namespace test {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::PrintToString;
using testing::StartsWith;

}  // namespace test
