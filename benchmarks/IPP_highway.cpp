// The conversion of 32-bit samples as it is written with Highway, which compiles it for every instruction set that it
// knows and chooses when it is called.

#include "benchmarks/IPP_highway.h"

#if CV_PEER_HIGHWAY

// Highway includes this file once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "benchmarks/IPP_highway.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace bench::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// `n` is a multiple of every vector's length.
void intToFloat(std::size_t n, const int* src, float* dst) {
    const hn::ScalableTag<float> floats;
    const hn::RebindToSigned<decltype(floats)> ints;
    const auto multiplier = hn::Set(floats, 1.0F / 2147483648.0F);
    for (std::size_t i = 0; i < n; i += hn::Lanes(floats)) {
        hn::StoreU(hn::Mul(hn::ConvertTo(floats, hn::LoadU(ints, src + i)), multiplier), floats, dst + i);
    }
}

}  // namespace bench::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace bench {

HWY_EXPORT(intToFloat);

void highwayIntToFloat(std::size_t n, const int* src, float* dst) {
    HWY_DYNAMIC_DISPATCH(intToFloat)(n, src, dst);
}

}  // namespace bench
#endif

#endif
