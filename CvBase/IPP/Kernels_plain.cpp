// The element-by-element loops, for processors of which the library knows no vector instructions.

#include <cstring>

#include "CvBase/IPP/Elements.h"
#include "CvBase/IPP/Kernels.h"

namespace IPP::Detail {
namespace {

void fillEach(std::size_t size, void* dst, std::uint64_t pattern) {
    auto* const bytes = static_cast<unsigned char*>(dst);
    std::size_t done = 0;
    for (; size - done >= sizeof pattern; done += sizeof pattern) {
        std::memcpy(bytes + done, &pattern, sizeof pattern);
    }
    std::memcpy(bytes + done, &pattern, size - done);
}

bool equalEach(std::size_t size, unsigned char const* a, unsigned char const* b) {
    for (std::size_t i = 0; i < size; ++i) {
        if (a[i] != b[i]) {
            return false;
        }
    }
    return true;
}

template <typename Operation>
void convert(std::size_t n, typename Operation::Source const* src, typename Operation::Result* dst) {
    convertEach(Operation{}, n, src, dst);
}

template <typename Operation, typename Multiplier>
void convertScaled(std::size_t n, typename Operation::Source const* src, typename Operation::Result* dst,
                   Multiplier multiplier) {
    convertEach(Operation{multiplier}, n, src, dst);
}

}  // namespace

Kernels const PLAIN_KERNELS = {
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
    fillEach,
    equalEach,
};

}  // namespace IPP::Detail
