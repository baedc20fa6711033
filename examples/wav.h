#pragma once

// The samples of a 16-bit WAV file, for the two examples that take one.

#include <stdexcept>
#include <vector>

#include "CvBase/Util/ByteStream.h"
#include "CvBase/Util/File.h"

struct Wav {
    std::vector<unsigned char> header;  ///< all bytes before the samples
    std::vector<short> samples;
};

/// Throws Util::Exception::FileIO and DataStreamIO, and std::runtime_error when the file is something else.
inline Wav readWav(const FilePath& path) {
    Util::File file(path);
    file.Open(Util::File::Read);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(file.Size().Value()));
    file.ReadBlock(bytes);

    Util::ByteStream stream(bytes);
    stream.SetEndianType(Util::DataStream::LittleEndian);
    stream.Skip(12);  // "RIFF", a size, "WAVE"
    unsigned short bits = 0;
    for (;;) {
        stream.SetEndianType(Util::DataStream::BigEndian);
        const unsigned int kind = stream.ReadPrimitive(0U);
        stream.SetEndianType(Util::DataStream::LittleEndian);
        const unsigned int size = stream.ReadPrimitive(0U);
        if (kind == 0x64617461) {  // "data"
            if (bits != 16) {
                throw std::runtime_error("this is not a 16-bit WAV file");
            }
            const auto start = static_cast<std::ptrdiff_t>(stream.GetPosition());
            Wav wav{{bytes.begin(), bytes.begin() + start}, std::vector<short>(size / 2)};
            for (short& sample : wav.samples) {
                stream >> sample;
            }
            return wav;
        }
        const unsigned int next = stream.GetPosition() + size + size % 2;
        if (kind == 0x666D7420) {  // "fmt "
            stream.Skip(14);
            stream >> bits;
        }
        stream.SetPosition(next);
    }
}
