// Each vector path against the plain loops: whatever instructions the processor has, the same bits.

#include <memory>

#include "CvBase/IPP/kernels/KernelChoice.h"
#include "tests/CvBase/IPP/Reference.h"

namespace {

using IPP::Detail::Path;
using namespace test::reference;

constexpr std::size_t GUARD = 64;
constexpr unsigned char GUARD_BYTE = 0xA5;

/// The longest unrolled step of any path is 128 elements (AVX-512, to 16 bits); three of them and a rest.
constexpr std::size_t THREE_BLOCKS = 3 * 128 + 9;

/// More bytes than a cache holds, which go through other stores.
constexpr std::size_t HUGE_SIZE = std::size_t{33} << 20;

/// An area of memory with guards on both sides, whose first byte is `offset` bytes past a multiple of 64.
class GuardedArea {
public:
    GuardedArea(std::size_t size, std::size_t offset) : storage_(size + offset + 3 * GUARD, GUARD_BYTE) {
        const std::size_t past = reinterpret_cast<std::uintptr_t>(storage_.data()) % GUARD;
        start_ = GUARD + (GUARD - past) % GUARD + offset;
    }
    unsigned char* data() { return storage_.data() + start_; }
    void refill() { std::fill(storage_.begin(), storage_.end(), GUARD_BYTE); }

    /// Whether the area begins with the first `used` bytes of `results`, and everything else is as it was.
    bool holdsOnly(const Bytes& results, std::size_t used) const {
        const auto intact = [](unsigned char byte) { return byte == GUARD_BYTE; };
        const auto start = storage_.begin() + static_cast<std::ptrdiff_t>(start_);
        const auto end = start + static_cast<std::ptrdiff_t>(used);
        return std::equal(start, end, results.begin()) && std::all_of(storage_.begin(), start, intact) &&
               std::all_of(end, storage_.end(), intact);
    }

private:
    Bytes storage_;
    std::size_t start_;
};

class EveryPath : public testing::TestWithParam<Path> {
protected:
    EveryPath() { IPP::Detail::usePath(GetParam()); }
    ~EveryPath() override { IPP::Detail::usePath(IPP::Detail::bestPath()); }
};

std::vector<Path> supportedPaths() {
    std::vector<Path> paths;
    std::copy_if(std::begin(IPP::Detail::PATHS), std::end(IPP::Detail::PATHS), std::back_inserter(paths),
                 IPP::Detail::isSupported);
    return paths;
}

std::string nameOf(const testing::TestParamInfo<Path>& info) {
    std::string name = IPP::Detail::nameOf(info.param);
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
}

INSTANTIATE_TEST_SUITE_P(IPP, EveryPath, testing::ValuesIn(supportedPaths()), nameOf);

/// The name of the widest path that this processor has, or that one has that an emulator makes up.
std::string widestPath() {
    if (const char* const ofEmulator = std::getenv("IPP_WIDEST_PATH")) {
        return ofEmulator;
    }
    std::string flags = test::readFile("/proc/cpuinfo");
    std::replace(flags.begin(), flags.end(), '\n', ' ');
    const auto has = [&](const char* flag) { return flags.find(flag) != std::string::npos; };
    return has(" avx512f ") && has(" avx512bw ") ? "AVX-512"
           : has(" avx2 ") && has(" fma ")       ? "AVX2"
           : has(" sse2 ")                       ? "SSE2"
                                                 : "plain";
}

TEST(FirstCall, ChoosesTheWidestPathOfTheProcessor) {
    const IPP::Detail::Kernels* const chosen = &IPP::Detail::activeKernels();
    for (const Path path : supportedPaths()) {
        IPP::Detail::usePath(path);
        EXPECT_EQ(&IPP::Detail::activeKernels() == chosen, IPP::Detail::nameOf(path) == widestPath()) << widestPath();
    }
}

Bytes expected(const Conversion& conversion, std::size_t n, const Bytes& input) {
    Bytes results(n * conversion.resultSize);
    conversion.expect(n, input.data(), results.data());
    return results;
}

/// Converts the first `n` elements of `input`, which lie in memory of their own that ends with them, `sourceOffset`
/// bytes past what the allocator aligned, into `area`; the first bytes of `results` must come out and nothing else
/// change.
void expectConverted(const Conversion& conversion, std::size_t n, const Bytes& input, std::size_t sourceOffset,
                     GuardedArea& area, const Bytes& results) {
    const std::size_t size = n * conversion.sourceSize;
    const std::unique_ptr<unsigned char[]> memory(new unsigned char[sourceOffset + size]);
    std::copy_n(input.data(), size, memory.get() + sourceOffset);
    area.refill();
    conversion.convert(n, memory.get() + sourceOffset, area.data());
    ASSERT_TRUE(area.holdsOnly(results, n * conversion.resultSize)) << conversion.name << ", n " << n;
}

// Long arrays are aligned first.
TEST_P(EveryPath, ConvertsEveryLengthAtEveryMisalignment) {
    const std::size_t longest = 2100;
    for (const Conversion& conversion : conversions({-15, -31})) {
        const Bytes input = conversion.randomInput(longest);
        const Bytes results = expected(conversion, longest, input);
        for (std::size_t offset = 0; offset < GUARD; ++offset) {
            GuardedArea area(THREE_BLOCKS * conversion.resultSize, offset), longArea(results.size(), offset);
            for (std::size_t n = offset % 2; n <= THREE_BLOCKS; n += n < 40 ? 1 : 2) {
                ASSERT_NO_FATAL_FAILURE(expectConverted(conversion, n, input, (offset * 7 + n) % GUARD, area, results));
            }
            for (const std::size_t n : {1024 + offset, longest}) {
                ASSERT_NO_FATAL_FAILURE(expectConverted(conversion, n, input, offset / 2, longArea, results));
            }
        }
    }
}

/// Expects that `conversion` makes the plain loop's bits of all of `input`.
void expectSameBits(const Conversion& conversion, const Bytes& input) {
    const std::size_t n = input.size() / conversion.sourceSize;
    const Bytes results = expected(conversion, n, input);
    Bytes stored(results.size());
    conversion.convert(n, input.data(), stored.data());
    const auto different = std::mismatch(stored.begin(), stored.end(), results.begin()).first - stored.begin();
    ASSERT_TRUE(stored == results) << conversion.name << ", byte " << different << " of the results";
}

TEST_P(EveryPath, ConvertsSpecialValuesAtEveryScale) {
    std::vector<int> scales = {INT_MIN, INT_MIN + 1, -1000, 1000, INT_MAX - 1, INT_MAX};
    for (int scale = -160; scale <= 160; ++scale) {
        scales.push_back(scale);
    }
    for (const Conversion& conversion : conversions(scales)) {
        // Twice, so that each value is in the vector loop once, whatever the length of its rest.
        Bytes input = conversion.specialInput();
        const Bytes once = input;
        input.insert(input.end(), once.begin(), once.end());
        ASSERT_NO_FATAL_FAILURE(expectSameBits(conversion, input));
    }
}

TEST_P(EveryPath, ConvertsManyRandomValues) {
    for (const Conversion& conversion : conversions({-31, -15, -1, 0, 1, 15, 31})) {
        ASSERT_NO_FATAL_FAILURE(expectSameBits(conversion, conversion.randomInput(1000000)));
    }
}

TEST_P(EveryPath, ConvertsHugeArrays) {
    for (const Conversion& conversion : conversions({-15})) {
        const std::size_t n = HUGE_SIZE / (conversion.sourceSize + conversion.resultSize);
        const Bytes once = conversion.randomInput(100003);
        Bytes input;
        while (input.size() < n * conversion.sourceSize) {
            input.insert(input.end(), once.begin(), once.end());
        }
        GuardedArea area(n * conversion.resultSize, 2 * conversion.resultSize);
        conversion.convert(n, input.data(), area.data());
        ASSERT_TRUE(area.holdsOnly(expected(conversion, n, input), n * conversion.resultSize)) << conversion.name;
    }
}

TEST_P(EveryPath, ConvertsInPlace) {
    for (const Conversion& conversion : conversions({-15})) {
        for (const std::size_t n : {7U, 100U, 1555U}) {
            Bytes memory = conversion.randomInput(n);
            const Bytes results = expected(conversion, n, memory);
            if (results.size() <= memory.size()) {
                conversion.convert(n, memory.data(), memory.data());
                ASSERT_TRUE(std::equal(results.begin(), results.end(), memory.begin())) << conversion.name << ", " << n;
            }
        }
    }
}

TEST_P(EveryPath, ReadsNoPointerForNoElements) {
    for (const Conversion& conversion : conversions({-15})) {
        conversion.convert(0, nullptr, nullptr);
    }
    double* const nowhere = nullptr;
    IPP::Copy(0, nowhere, nowhere);
    IPP::Move(0, nowhere, nowhere);
    IPP::Set(0, nowhere, 1.0);
    IPP::Zero(0, nowhere);
    EXPECT_TRUE(IPP::Equal(0, nullptr, nullptr));
}

template <typename T>
void expectSet(T value) {
    const Bytes results = asBytes(std::vector<T>(300, value == T{0} ? T{0} : value));
    for (std::size_t offset = 0; offset < GUARD; ++offset) {
        GuardedArea area(results.size(), offset);
        for (unsigned int n = 0; n <= 300; ++n) {
            area.refill();
            IPP::Set(n, reinterpret_cast<T*>(area.data()), value);
            ASSERT_TRUE(area.holdsOnly(results, n * sizeof(T))) << value << ", n " << n;
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
    const std::size_t n = HUGE_SIZE / sizeof(double);
    std::vector<double> values(n + 2, 7.0);
    IPP::Set(static_cast<unsigned int>(n), values.data() + 1, -1.0 / 3);
    EXPECT_EQ(std::count(values.begin(), values.end(), -1.0 / 3), static_cast<std::ptrdiff_t>(n));
    EXPECT_TRUE(values.front() == 7.0 && values.back() == 7.0);
}

TEST_P(EveryPath, FindsTheOneDifferentByte) {
    for (std::size_t n = 0; n <= 3 * 256 + 9; n += n < 150 ? 1 : 13) {
        const std::size_t offset = n % 65;
        const Bytes a = randomInput<unsigned char>(n);
        const std::unique_ptr<unsigned char[]> b(new unsigned char[offset + n]);
        std::copy_n(a.data(), n, b.get() + offset);
        const auto size = static_cast<unsigned int>(n);
        ASSERT_TRUE(IPP::Equal(size, a.data(), b.get() + offset)) << n;
        for (std::size_t i = 0; i < n; ++i) {
            b[offset + i] ^= static_cast<unsigned char>(1U << i % 8);
            ASSERT_FALSE(IPP::Equal(size, a.data(), b.get() + offset)) << n << ", different at " << i;
            b[offset + i] = a[i];
        }
    }
}

}  // namespace
