// The element-by-element loops, for processors whose vector instructions the library does not use.

#include "CvBase/IPP/kernels/Elements.h"
#include "CvBase/IPP/kernels/Kernels.h"

namespace IPP::Detail {
namespace {

template <typename Operation>
void convert(std::size_t n, const typename Operation::Source* src, typename Operation::Result* dst) {
    convertEach(Operation{}, n, src, dst);
}

template <typename Operation, typename Multiplier>
void convertScaled(std::size_t n, const typename Operation::Source* src, typename Operation::Result* dst,
                   Multiplier multiplier) {
    convertEach(Operation{multiplier}, n, src, dst);
}

void fill(std::size_t size, void* dst, std::uint64_t pattern) {
    fillEach(size, static_cast<unsigned char*>(dst), pattern);
}

bool equal(std::size_t size, const unsigned char* a, const unsigned char* b) {
    return equalEach(size, a, b);
}

}  // namespace

const Kernels PLAIN_KERNELS = {
    convert<ByteToFloat>,
    convertScaled<Scale<short, float>, float>,
    convertScaled<Scale<short, double>, double>,
    convertScaled<Scale<int, float>, float>,
    convertScaled<Scale<int, double>, double>,
    convert<FloatToDouble>,
    convert<DoubleToFloat>,
    convertScaled<FloatToShort<false>, float>,
    convertScaled<FloatToShort<true>, float>,
    convertScaled<FloatToInt<false, false>, float>,
    convertScaled<FloatToInt<true, false>, float>,
    convertScaled<FloatToInt<false, true>, float>,
    convertScaled<FloatToInt<true, true>, float>,
    fill,
    equal,
};

}  // namespace IPP::Detail
