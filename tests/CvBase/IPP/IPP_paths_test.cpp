// Each vector path against the plain loops: whatever instructions the processor has, the same bits.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <ostream>
#include <random>

#include "CvBase/IPP/Dispatch.h"
#include "tests/CvBase/IPP/Reference.h"

namespace IPP::Detail {

void PrintTo(Path path, std::ostream* out) {
    *out << NameOf(path);
}

}  // namespace IPP::Detail

namespace {

using IPP::Detail::Path;
using test::reference::Conversion;
using test::reference::conversions;
using test::reference::Kind;
using Bytes = std::vector<unsigned char>;

constexpr std::size_t GUARD = 64;
constexpr unsigned char GUARD_BYTE = 0xA5;

/// The longest unrolled step of any path is 128 elements (AVX-512, to 16 bits); three of them and a rest.
constexpr std::size_t THREE_BLOCKS = 3 * 128 + 9;

std::vector<int> const USUAL_SCALES = {-31, -15, -1, 0, 1, 15, 31};

template <typename T>
T bitsAs(std::uint64_t bits) {
    T value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// A value of any magnitude that the conversions tell apart, or, one time in four, of any bits at all.
template <typename T>
T randomFloating(std::mt19937_64& random) {
    std::uint64_t const bits = random();
    if (bits % 4 == 0) {
        return bitsAs<T>(random());
    }
    auto const fraction = static_cast<T>(static_cast<std::int32_t>(bits >> 32)) / static_cast<T>(2147483648.0);
    return std::ldexp(fraction, static_cast<int>(bits / 4 % 72) - 36);
}

template <typename T>
Bytes asBytes(std::vector<T> const& values) {
    Bytes bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

template <typename T, typename Make>
Bytes makeValues(std::size_t n, Make make) {
    std::vector<T> values(n);
    std::generate(values.begin(), values.end(), make);
    return asBytes(values);
}

Bytes randomInput(Kind kind, std::size_t n) {
    std::mt19937_64 random(20070612);
    switch (kind) {
        case Kind::FLOAT:
            return makeValues<float>(n, [&] { return randomFloating<float>(random); });
        case Kind::DOUBLE:
            return makeValues<double>(n, [&] { return randomFloating<double>(random); });
        default:
            return makeValues<std::uint64_t>(n, random);
    }
}

/// Both signs of the values at which a conversion changes its mind, with their neighbours, and NaNs of every sort.
template <typename T>
Bytes specialFloating() {
    std::vector<T> values;
    T const infinity = std::numeric_limits<T>::infinity();
    T const turns[] = {0,
                       std::numeric_limits<T>::min(),
                       std::numeric_limits<T>::max(),
                       T(0.5),
                       T(0.25),
                       1,
                       2,
                       T(1.5),
                       T(2.5),
                       32767,
                       T(32767.5),
                       32768,
                       65535,
                       65536,
                       4194304,
                       8388608,
                       8388609,
                       16777216,
                       2147483648.0,
                       4294967296.0,
                       T(0.5) / 32768,
                       T(0.5) / T(2147483648.0),
                       1 / T(2147483648.0),
                       3 / T(4294967296.0),
                       infinity,
                       static_cast<T>(std::numeric_limits<float>::max()),
                       static_cast<T>(std::numeric_limits<float>::min()),
                       static_cast<T>(std::numeric_limits<float>::denorm_min())};
    for (T const turn : turns) {
        for (T const value : {turn, std::nextafter(turn, T(0)), std::nextafter(turn, infinity)}) {
            values.push_back(value);
            values.push_back(-value);
        }
    }
    bool const isFloat = sizeof(T) == sizeof(float);
    for (std::uint64_t const bits : {0x7FC00000U, 0xFFC00000U, 0x7F800001U, 0xFF812345U}) {
        values.push_back(bitsAs<T>(isFloat ? bits : bits << 32 | 1));
    }
    for (std::uint64_t const bits : {0x7FF8000000000000U, 0xFFF0000000000001U, 0x7FF0000020000000U}) {
        values.push_back(bitsAs<T>(isFloat ? bits >> 32 : bits));
    }
    return asBytes(values);
}

template <typename T>
Bytes specialIntegers() {
    T const least = std::numeric_limits<T>::min();
    T const greatest = std::numeric_limits<T>::max();
    return asBytes(std::vector<T>{0, 1, 2, 127, T(128), T(255), T(-1), T(-2), T(16777217), T(33554431), T(-16777219),
                                  least, T(least + 1), T(greatest - 1), greatest, T(greatest / 2), T(greatest - 63),
                                  T(greatest - 64)});
}

Bytes specialInput(Kind kind) {
    switch (kind) {
        case Kind::BYTE:
            return specialIntegers<unsigned char>();
        case Kind::SHORT:
            return specialIntegers<short>();
        case Kind::INT:
            return specialIntegers<int>();
        case Kind::FLOAT:
            return specialFloating<float>();
        case Kind::DOUBLE:
            return specialFloating<double>();
    }
    return {};
}

/// An area of memory with guards on both sides, whose first byte is `offset` bytes past a multiple of 64.
class GuardedArea {
public:
    GuardedArea(std::size_t size, std::size_t offset) : storage_(size + offset + 3 * GUARD, GUARD_BYTE) {
        std::size_t const past = reinterpret_cast<std::uintptr_t>(storage_.data()) % GUARD;
        start_ = GUARD + (GUARD - past) % GUARD + offset;
    }
    unsigned char* data() { return storage_.data() + start_; }
    void refill() { std::fill(storage_.begin(), storage_.end(), GUARD_BYTE); }
    /// Whether everything but the first `used` bytes of the area is as it was.
    bool guardsStand(std::size_t used) const {
        auto const intact = [](unsigned char byte) { return byte == GUARD_BYTE; };
        auto const start = storage_.begin() + static_cast<std::ptrdiff_t>(start_);
        return std::all_of(storage_.begin(), start, intact) &&
               std::all_of(start + static_cast<std::ptrdiff_t>(used), storage_.end(), intact);
    }

private:
    Bytes storage_;
    std::size_t start_;
};

class EveryPath : public testing::TestWithParam<Path> {
protected:
    EveryPath() { IPP::Detail::UsePath(GetParam()); }
    ~EveryPath() override { IPP::Detail::UsePath(IPP::Detail::BestPath()); }
};

std::vector<Path> supportedPaths() {
    std::vector<Path> paths;
    std::copy_if(std::begin(IPP::Detail::PATHS), std::end(IPP::Detail::PATHS), std::back_inserter(paths),
                 IPP::Detail::IsSupported);
    return paths;
}

std::string nameOf(testing::TestParamInfo<Path> const& info) {
    std::string name = IPP::Detail::NameOf(info.param);
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
}

INSTANTIATE_TEST_SUITE_P(IPP, EveryPath, testing::ValuesIn(supportedPaths()), nameOf);

Bytes expected(Conversion const& conversion, std::size_t n, Bytes const& input) {
    Bytes results(n * conversion.resultSize);
    conversion.expect(n, input.data(), results.data());
    return results;
}

/// Converts the first `n` elements of `input`, which lie in memory of their own that ends with them, `sourceOffset`
/// bytes past what the allocator aligned, into `area`; the first bytes of `results` must come out and nothing else
/// change.
void expectConverted(Conversion const& conversion, std::size_t n, Bytes const& input, std::size_t sourceOffset,
                     GuardedArea& area, Bytes const& results) {
    std::size_t const size = n * conversion.sourceSize;
    std::unique_ptr<unsigned char[]> const memory(new unsigned char[sourceOffset + size]);
    std::memcpy(memory.get() + sourceOffset, input.data(), size);
    area.refill();
    conversion.convert(n, memory.get() + sourceOffset, area.data());
    ASSERT_EQ(std::memcmp(area.data(), results.data(), n * conversion.resultSize), 0) << conversion.name << ", n " << n;
    ASSERT_TRUE(area.guardsStand(n * conversion.resultSize)) << conversion.name << ", n " << n;
}

TEST_P(EveryPath, ConvertsEveryLengthAtEveryMisalignment) {
    for (Conversion const& conversion : conversions({-15})) {
        Bytes const input = randomInput(conversion.source, THREE_BLOCKS);
        Bytes const results = expected(conversion, THREE_BLOCKS, input);
        for (std::size_t offset = 0; offset < GUARD; ++offset) {
            GuardedArea area(THREE_BLOCKS * conversion.resultSize, offset);
            for (std::size_t n = offset % 2; n <= THREE_BLOCKS; n += n < 40 ? 1 : 2) {
                ASSERT_NO_FATAL_FAILURE(expectConverted(conversion, n, input, (offset * 7 + n) % GUARD, area, results));
            }
        }
    }
}

TEST_P(EveryPath, ConvertsLongerArraysThatItAligns) {
    std::size_t const longest = 2100;
    for (Conversion const& conversion : conversions({-31})) {
        Bytes const input = randomInput(conversion.source, longest);
        Bytes const results = expected(conversion, longest, input);
        for (std::size_t offset = 0; offset < GUARD; ++offset) {
            GuardedArea area(longest * conversion.resultSize, offset);
            for (std::size_t const n : {std::size_t{255}, std::size_t{1024} + offset, longest}) {
                ASSERT_NO_FATAL_FAILURE(expectConverted(conversion, n, input, offset / 2, area, results));
            }
        }
    }
}

TEST_P(EveryPath, ConvertsSpecialValuesAtEveryScale) {
    std::vector<int> scales = {INT_MIN, INT_MIN + 1, -1000, 1000, INT_MAX - 1, INT_MAX};
    for (int scale = -160; scale <= 160; ++scale) {
        scales.push_back(scale);
    }
    for (Conversion const& conversion : conversions(scales)) {
        // Twice, so that each value is in the vector loop once, whatever the length of its rest.
        Bytes input = specialInput(conversion.source);
        Bytes const once = input;
        input.insert(input.end(), once.begin(), once.end());
        std::size_t const n = input.size() / conversion.sourceSize;
        Bytes const results = expected(conversion, n, input);
        Bytes stored(results.size());
        conversion.convert(n, input.data(), stored.data());
        for (std::size_t i = 0; i < n; ++i) {
            std::size_t const at = i * conversion.resultSize;
            ASSERT_EQ(std::memcmp(stored.data() + at, results.data() + at, conversion.resultSize), 0)
                << conversion.name << ", special value " << i;
        }
    }
}

TEST_P(EveryPath, ConvertsAMillionRandomValues) {
    std::size_t const n = 1000000;
    for (Conversion const& conversion : conversions(USUAL_SCALES)) {
        Bytes const input = randomInput(conversion.source, n);
        Bytes const results = expected(conversion, n, input);
        Bytes stored(results.size());
        conversion.convert(n, input.data(), stored.data());
        ASSERT_TRUE(stored == results) << conversion.name;
    }
}

// Far more elements than a cache holds go through other stores.
TEST_P(EveryPath, ConvertsHugeArrays) {
    std::size_t const period = 100003;
    for (Conversion const& conversion : conversions({-15})) {
        std::size_t const n = (std::size_t{33} << 20) / (conversion.sourceSize + conversion.resultSize);
        std::size_t const periods = n / period + 1;
        Bytes const once = randomInput(conversion.source, period);
        Bytes const results = expected(conversion, period, once);
        Bytes input(periods * period * conversion.sourceSize);
        for (std::size_t i = 0; i < periods; ++i) {
            std::size_t const size = period * conversion.sourceSize;
            std::memcpy(input.data() + i * size, once.data(), size);
        }
        GuardedArea area(n * conversion.resultSize, 2 * conversion.resultSize);
        conversion.convert(n, input.data(), area.data());
        std::size_t const end = n * conversion.resultSize;
        for (std::size_t at = 0; at < end; at += results.size()) {
            ASSERT_EQ(std::memcmp(area.data() + at, results.data(), std::min(results.size(), end - at)), 0)
                << conversion.name << " from byte " << at;
        }
        ASSERT_TRUE(area.guardsStand(end)) << conversion.name;
    }
}

TEST_P(EveryPath, ConvertsInPlace) {
    for (Conversion const& conversion : conversions({-15})) {
        if (conversion.resultSize > conversion.sourceSize) {
            continue;
        }
        for (std::size_t const n : {7U, 100U, 1555U}) {
            Bytes memory = randomInput(conversion.source, n);
            Bytes const results = expected(conversion, n, memory);
            conversion.convert(n, memory.data(), memory.data());
            ASSERT_EQ(std::memcmp(memory.data(), results.data(), results.size()), 0) << conversion.name << ", n " << n;
        }
    }
}

template <typename T>
void expectSet(T value) {
    T const stored = value == T{0} ? T{0} : value;
    Bytes results;
    for (std::size_t i = 0; i < 300; ++i) {
        auto const* const bytes = reinterpret_cast<unsigned char const*>(&stored);
        results.insert(results.end(), bytes, bytes + sizeof stored);
    }
    for (std::size_t offset = 0; offset < GUARD; ++offset) {
        GuardedArea area(results.size(), offset);
        for (unsigned int n = 0; n <= 300; ++n) {
            area.refill();
            IPP::Set(n, reinterpret_cast<T*>(area.data()), value);
            ASSERT_EQ(std::memcmp(area.data(), results.data(), n * sizeof(T)), 0) << value << ", n " << n;
            ASSERT_TRUE(area.guardsStand(n * sizeof(T))) << value << ", n " << n;
        }
    }
}

TEST_P(EveryPath, SetsEveryLengthAtEveryMisalignment) {
    expectSet<unsigned char>(0xC3);
    expectSet<short>(0x1234);
    expectSet<short>(0);
    expectSet<int>(0x12345678);
    expectSet<unsigned int>(0x89ABCDEFU);
    expectSet<float>(-0.0F);
    expectSet<float>(bitsAs<float>(0xFFC54321U));
    expectSet<double>(-0.0);
    expectSet<double>(-1.0 / 3);
    expectSet<double>(bitsAs<double>(0xFFF8000000012345U));
}

TEST_P(EveryPath, SetsHugeArrays) {
    std::size_t const n = (std::size_t{33} << 20) / sizeof(double);
    std::vector<double> values(n + 2, 7.0);
    IPP::Set(static_cast<unsigned int>(n), values.data() + 1, -1.0 / 3);
    EXPECT_EQ(std::count(values.begin(), values.end(), -1.0 / 3), static_cast<std::ptrdiff_t>(n));
    EXPECT_EQ(values.front(), 7.0);
    EXPECT_EQ(values.back(), 7.0);
}

TEST_P(EveryPath, FindsTheOneDifferentByte) {
    for (std::size_t n = 0; n <= 3 * 256 + 9; n += n < 150 ? 1 : 13) {
        std::size_t const offset = n % 65;
        Bytes const input = randomInput(Kind::BYTE, n / 8 + 1);
        std::unique_ptr<unsigned char[]> const a(new unsigned char[n]);
        std::unique_ptr<unsigned char[]> const b(new unsigned char[offset + n]);
        std::memcpy(a.get(), input.data(), n);
        std::memcpy(b.get() + offset, input.data(), n);
        auto const size = static_cast<unsigned int>(n);
        ASSERT_TRUE(IPP::Equal(size, a.get(), b.get() + offset)) << n;
        for (std::size_t i = 0; i < n; ++i) {
            b[offset + i] ^= static_cast<unsigned char>(1U << i % 8);
            ASSERT_FALSE(IPP::Equal(size, a.get(), b.get() + offset)) << n << ", different at " << i;
            b[offset + i] = a[i];
        }
    }
}

}  // namespace
