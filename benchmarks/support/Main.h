#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace bench {

/// What one subject does of a work that several subjects do.
struct Subject {
    std::string name;
    /// What is measured.
    std::function<void()> body;
    /// Whether `body`, which has just been run, did what it should.
    std::function<bool()> correct;
    /// Makes ready what `body` needs, before each measurement and outside of it; may be empty.
    std::function<void()> prepare;
};

/// Adds the benchmark `work`/`subject.name`. Its answer is checked once before anything is measured; a wrong one ends
/// it with an error. The table compares the subjects of one work.
void add(std::string const& work, Subject subject);

}  // namespace bench
