#pragma once

// What the fuzzers share: the input, taken apart, and the comparison with a model, which keeps a trace of what was
// done.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <type_traits>

namespace fuzz {

using Input = FuzzedDataProvider;

/// What was done with this input, a word for each operation; shown when an answer is wrong.
inline std::string& trace() {
    static std::string words;
    return words;
}

/// The value as a person can read it.
template <typename Value>
std::string shown(const Value& value) {
    std::ostringstream out;
    if constexpr (std::is_convertible_v<Value, std::string>) {
        out << '"';
        for (const char c : std::string(value)) {
            char code[8];
            const bool isPlain = c >= ' ' && c <= '~' && c != '\\';
            std::snprintf(code, sizeof code, isPlain ? "%c" : "\\x%02x", static_cast<unsigned char>(c));
            out << code;
        }
        out << '"';
    } else {
        out.precision(17);
        out << +value;
    }
    return out.str();
}

/// Ends the program, upon which the input is kept, after saying what is wrong.
[[noreturn]] inline void fail(const std::string& what) {
    std::fprintf(stderr, "wrong: %s\nafter:%s\n", what.c_str(), trace().c_str());
    std::abort();
}

/// Fails unless the answer of the code under test is the model's.
template <typename Answer, typename Expected>
void expectEqual(const char* what, const Answer& answer, const Expected& expected) {
    if (!(answer == expected)) {
        fail(std::string(what) + ": is " + shown(answer) + ", should be " + shown(expected));
    }
}

inline void expect(const char* what, bool holds) {
    if (!holds) {
        fail(what);
    }
}

/// A number that is often small, sometimes at an end of its range, and can be any.
inline unsigned int number(Input& input) {
    static constexpr unsigned int ENDS[] = {0xFFFFFFFF, 0xFFFFFFFE, 0x80000000, 0x7FFFFFFF};
    const auto choice = input.ConsumeIntegral<unsigned char>();
    return choice < 240 ? choice : choice < 252 ? ENDS[choice % 4] : input.ConsumeIntegral<unsigned int>();
}

}  // namespace fuzz
