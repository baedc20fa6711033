#include "CvBase/common/common_cast.h"

#include "tests/support/Test.h"

namespace {

/// Values around every limit of the 8-bit and 16-bit types, in the widest type.
template <typename To, typename From>
void expectRangeOf() {
    for (long long wide = -70000; wide <= 70000; ++wide) {
        if (static_cast<long long>(static_cast<From>(wide)) != wide) {
            continue;
        }
        const bool fits = wide >= static_cast<long long>(std::numeric_limits<To>::min()) &&
                          wide <= static_cast<long long>(std::numeric_limits<To>::max());
        const checked_value<To> cast = checked_cast<To>(static_cast<From>(wide));
        ASSERT_EQ(cast.IsSet(), fits) << wide;
        ASSERT_EQ(static_cast<long long>(cast.Value()), fits ? wide : 0);
    }
}

TEST(CheckedCast, KeepsValuesThatFit) {
    expectRangeOf<std::int8_t, std::uint8_t>();
    expectRangeOf<std::uint8_t, std::int8_t>();
    expectRangeOf<std::int16_t, std::int32_t>();
    expectRangeOf<std::uint16_t, std::int32_t>();
    expectRangeOf<std::int16_t, std::uint16_t>();
    expectRangeOf<std::uint16_t, std::int16_t>();
    expectRangeOf<std::uint16_t, std::int64_t>();
}

TEST(CheckedCast, AtTheWidestLimits) {
    EXPECT_FALSE(in_range<std::int64_t>(0x8000000000000000ULL));
    EXPECT_TRUE(in_range<std::int64_t>(0x7FFFFFFFFFFFFFFFULL));
    EXPECT_FALSE(in_range<std::uint64_t>(-1));
    EXPECT_FALSE(in_range<std::uint32_t>(0x100000000LL));
}

}  // namespace
