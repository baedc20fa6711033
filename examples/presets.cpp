// A file format over the byte stream: presets with a name and values, in either byte order, and what damage reads as.
//
//     presets FILE         writes FILE twice and reads it again

#include <cstdio>
#include <iostream>
#include <vector>

#include "CvBase/Util/ByteStream.h"
#include "CvBase/Util/File.h"
#include "CvBase/common/common_std.h"

namespace {

using Util::DataStream;
struct Preset {
    String name;
    std::vector<float> values;
};

void write(DataStream& stream, const Preset& preset) {
    stream << static_cast<unsigned short>(1) << preset.name << static_cast<unsigned int>(preset.values.size());
    for (const float value : preset.values) {
        stream << value;
    }
}

Preset read(DataStream& stream) {
    Preset preset;
    stream.ReadPrimitive(static_cast<unsigned short>(0));  // the version
    stream >> preset.name;
    for (unsigned int left = stream.ReadPrimitive(0U); left > 0; --left) {
        preset.values.push_back(stream.ReadPrimitive(0.0F));
    }
    return preset;
}

void store(const FilePath& path, const Preset& preset, DataStream::EndianType order) {
    Util::ByteStream stream(64);
    stream.SetEndianType(order);
    write(stream, preset);
    std::vector<unsigned char> bytes(stream.GetSize());
    stream.SetPosition(0);
    stream >> bytes;
    Util::File file(path);
    file.Open(Util::File::Write);
    file.WriteBlock(bytes);
    file.Close();
}

Preset load(const FilePath& path, DataStream::EndianType order) {
    Util::File file(path);
    file.Open(Util::File::Read);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(file.Size().Value()));
    file.ReadBlock(bytes);
    for (const unsigned char byte : bytes) {
        std::printf("%02x", byte);
    }
    std::puts("");
    Util::ByteStream stream(bytes);
    stream.SetEndianType(order);
    return read(stream);
}

}  // namespace

int main(int argc, char** argv) try {
    const FilePath path(argc == 2 ? argv[1] : "", false);
    for (const DataStream::EndianType order : {DataStream::BigEndian, DataStream::LittleEndian}) {
        store(path, {"Hall", {0.5F, -2.0F}}, order);
        const Preset preset = load(path, order);
        std::printf("%s: %zu values, the last one %g\n", preset.name.CStr(), preset.values.size(),
                    preset.values.back());
    }
    load(path, DataStream::BigEndian);
} catch (const Exception::Base& failure) {
    std::printf("%s\n", failure.GetMessage().CStr());
    return 1;
}
