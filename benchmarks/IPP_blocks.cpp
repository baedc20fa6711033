// Copying, moving, filling and comparing, beside the C library's own block operations.

#include <algorithm>
#include <cstring>

#include "CvBase/IPP/IPP_util_mac.h"
#include "benchmarks/support/Buffers.h"
#include "benchmarks/support/Main.h"
#include "benchmarks/support/VectorCopy.h"

namespace {

using bench::add;
using bench::destination;
using bench::source;
using Byte = unsigned char;

std::string workName(const std::string& name, std::size_t n) {
    return "IPP/" + name + "/" + std::to_string(n);
}

void addCopying(std::size_t n) {
    const auto count = static_cast<unsigned int>(n);
    const std::size_t size = n * sizeof(float);
    const auto correct = [n, size] { return std::memcmp(destination<float>(n), source<float>(n), size) == 0; };
    add(workName("copy", n),
        {"CvBase", [n, count] { IPP::Copy(count, source<float>(n), destination<float>(n)); }, correct});
    add(workName("copy", n),
        {"memcpy", [n, size] { std::memcpy(destination<float>(n), source<float>(n), size); }, correct});
    add(workName("move", n),
        {"CvBase", [n, count] { IPP::Move(count, source<float>(n), destination<float>(n)); }, correct});
    add(workName("move", n),
        {"memmove", [n, size] { std::memmove(destination<float>(n), source<float>(n), size); }, correct});
}

template <typename T>
void addSetting(const std::string& name, std::size_t n, T value) {
    const auto count = static_cast<unsigned int>(n);
    const std::size_t size = n * sizeof(T);
    add(workName(name, n), {"CvBase",
                            [n, count, value] { IPP::Set(count, destination<T>(n), value); },
                            [n, value] {
                                const T* const dst = destination<T>(n);
                                return std::all_of(dst, dst + n, [value](T element) { return element == value; });
                            },
                            {}});
    add(workName(name, n), {"memset",
                            [n, size] { std::memset(destination<T>(n), 0x5A, size); },
                            [n, size] { return destination<T, Byte>(n)[size - 1] == 0x5A; },
                            {}});
}

void addZeroing(std::size_t n) {
    const auto count = static_cast<unsigned int>(n);
    const std::size_t size = n * sizeof(double);
    const auto correct = [n] { return destination<double>(n)[0] == 0.0 && destination<double>(n)[n - 1] == 0.0; };
    add(workName("zero", n), {"CvBase", [n, count] { IPP::Zero(count, destination<double>(n)); }, correct});
    add(workName("zero", n), {"memset", [n, size] { std::memset(destination<double>(n), 0, size); }, correct});
}

void addComparing(std::size_t n) {
    static bool same = false;
    const auto prepare = [n] { std::memcpy(destination<Byte>(n), source<Byte>(n), n); };
    const auto correct = [] { return same; };
    add(workName("equal", n),
        {"CvBase", [n] { same = IPP::Equal(static_cast<unsigned int>(n), source<Byte>(n), destination<Byte>(n)); },
         correct, prepare});
    add(workName("equal", n),
        {"memcmp", [n] { same = std::memcmp(source<Byte>(n), destination<Byte>(n), n) == 0; }, correct, prepare});
    static unsigned int sum = 0;
    add(workName("equal", n), {"reading", [n] { sum = bench::vectorRead(source<Byte>(n), destination<Byte>(n), n); },
                               [] { return sum == 0; }, prepare});
}

[[maybe_unused]] const bool added = [] {
    for (const std::size_t n : {bench::IN_CACHE, bench::IN_MEMORY}) {
        addCopying(n);
        addZeroing(n);
        addSetting<Byte>("set-byte", n, 0x5A);
        addSetting<short>("set-short", n, 0x1234);
        addSetting<int>("set-int", n, 0x12345678);
        addSetting<float>("set-float", n, 0.1F);
        addSetting<double>("set-double", n, 0.1);
        addComparing(n);
    }
    return true;
}();

}  // namespace
