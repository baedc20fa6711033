#pragma once

#include <gtest/gtest.h>

#include <string>

namespace test {

/// What this process writes to standard error while `body` runs.
template <typename Body>
std::string errorsOf(Body body) {
    testing::internal::CaptureStderr();
    body();
    return testing::internal::GetCapturedStderr();
}

}  // namespace test
