// Takes the samples of a 16-bit WAV file to 32 bits at a third of their level, by way of float, and plots how far the
// results are from exact ones: a float has 24 significant bits, so the error grows with the sample.
//
//     wav_error IN.wav

#include <array>
#include <cmath>
#include <cstdlib>
#include <iostream>

#include "CvBase/IPP/IPP_util_mac.h"
#include "CvBase/common/common_exception_base.h"
#include "CvBase/common/common_std.h"
#include "wav.h"

namespace {

constexpr std::size_t RANGES = 8;  // of the size of a sample, each twice as high as the one before

std::size_t rangeOf(short sample) {
    const int size = std::abs(int{sample});
    std::size_t range = 0;
    while (range + 1 < RANGES && size >= (256 << range)) {
        ++range;
    }
    return range;
}

std::vector<int> convert(const std::vector<short>& samples) {
    const auto count = static_cast<unsigned int>(samples.size());
    std::vector<float> floats(count);
    IPP::Convert(count, samples.data(), floats.data(), 15);
    for (float& value : floats) {
        value /= 3;
    }
    std::vector<int> converted(count);
    IPP::Convert(count, floats.data(), converted.data(), -31, true);
    return converted;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::cerr << "usage: wav_error IN.wav\n";
        return 2;
    }
    const std::vector<short> samples = readWav(FilePath(argv[1], false)).samples;
    const std::vector<int> converted = convert(samples);
    std::array<double, RANGES> largest{};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double exact = samples[i] * 65536.0 / 3;
        double& error = largest[rangeOf(samples[i])];
        error = std::max(error, std::abs(converted[i] - exact));
    }
    std::cout << "samples below  largest error in units of 32 bits\n";
    for (std::size_t range = 0; range < RANGES; ++range) {
        const std::string bar(static_cast<std::size_t>(std::lround(largest[range])), '#');
        std::cout << String("%1").Arg(256 << range, 10, 5U) << ' ' << bar << ' ' << String::Number(largest[range], 2)
                  << '\n';
    }
} catch (const Exception::Base& failure) {
    std::cerr << failure.ToString();
    return 1;
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
