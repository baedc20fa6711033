#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <string>

namespace bench {

/// What a measurement counts: the time of this process on the processor, which other programs disturb least, or all
/// time that goes by, for what other processes do.
enum class Clock { Processor, Wall };

/// What one subject does of a work that several subjects do.
struct Subject {
    std::string name;
    /// What is measured.
    std::function<void()> body;
    /// Whether `body`, which has just been run, did what it should.
    std::function<bool()> correct;
    /// Makes ready what `body` needs, before each measurement and outside of it; may be empty.
    std::function<void()> prepare = {};
    Clock clock = Clock::Processor;
    /// Whether a measurement is one run of `body` only, and the answer is checked after each.
    bool once = false;
};

/// Adds the benchmark `work`/`subject.name`. Its answer is checked once before anything is measured; a wrong one ends
/// it with an error. The table compares the subjects of one work.
void add(const std::string& work, Subject subject);

/// Adds a number that is counted and not measured, the smaller the better: the table shows it for `work`.
void addCount(const std::string& work, std::function<std::uint64_t()> count);

/// The same as add for a body that gives a number made of all its results, which must be `wanted`.
void addAnswering(const std::string& work, const std::string& name, std::function<std::uint64_t()> body,
                  std::uint64_t wanted, Clock clock = Clock::Processor);

}  // namespace bench
