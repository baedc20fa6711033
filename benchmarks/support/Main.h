#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
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

/// The same for a body that gives a number made of all its results, which must be `wanted`.
void addAnswering(std::string const& work, std::string const& name, std::function<std::uint64_t()> body,
                  std::uint64_t wanted);

}  // namespace bench
