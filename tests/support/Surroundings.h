#pragma once

#include "tests/support/Test.h"

namespace test {

/// Sets HOME, or removes it when `home` has no value.
inline void setHome(const std::optional<std::string>& home) {
    if (home) {
        setenv("HOME", home->c_str(), 1);
    } else {
        unsetenv("HOME");
    }
}

/// Puts the working folder and HOME back at the end of the scope.
class Surroundings {
public:
    Surroundings() : workingFolder_(fs::current_path()) {
        if (const char* const home = std::getenv("HOME")) {
            home_ = home;
        }
    }
    ~Surroundings() {
        setHome(home_);
        fs::current_path(workingFolder_);
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

private:
    fs::path workingFolder_;
    std::optional<std::string> home_;
};

}  // namespace test
