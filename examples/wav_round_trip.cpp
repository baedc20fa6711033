// Takes the samples of a 16-bit WAV file to float and back: the file written is the file read, bit for bit.
//
//     wav_round_trip IN.wav OUT.wav

#include <algorithm>
#include <iostream>

#include "CvBase/IPP/IPP_util_mac.h"
#include "CvBase/common/common_exception_base.h"
#include "CvBase/common/common_std.h"
#include "wav.h"

namespace {

void write(const FilePath& path, const Wav& wav) {
    Util::ByteStream stream(static_cast<unsigned int>(wav.header.size() + 2 * wav.samples.size()));
    stream << wav.header;
    for (const short sample : wav.samples) {
        stream << sample;
    }
    std::vector<unsigned char> bytes(stream.GetSize());
    stream.SetPosition(0);
    stream >> bytes;
    Util::File file(path);
    file.Open(Util::File::Write);
    file.WriteBlock(bytes);
    file.Close();  // a full disk shows here
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::cerr << "usage: wav_round_trip IN.wav OUT.wav\n";
        return 2;
    }
    Wav wav = readWav(FilePath(argv[1], false));
    const auto count = static_cast<unsigned int>(wav.samples.size());
    std::vector<float> floats(count);
    IPP::Convert(count, wav.samples.data(), floats.data(), 15);  // full scale is ±1.0
    const auto [least, greatest] = std::minmax_element(floats.begin(), floats.end());
    std::cout << count << " samples from " << *least << " to " << *greatest << '\n';
    IPP::Convert(count, floats.data(), wav.samples.data(), -15, true);
    write(FilePath(argv[2], false), wav);
} catch (const Exception::Base& failure) {
    std::cerr << failure.ToString();
    return 1;
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
