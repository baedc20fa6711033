#pragma once

#include <vector>

#include "CvBase/Util/ByteStream.h"

namespace test {

using Bytes = std::vector<unsigned char>;

/// All bytes of `stream`, which stays where it is.
inline Bytes bytesOf(Util::DataStream& stream) {
    const unsigned int position = stream.GetPosition();
    Bytes bytes(stream.GetSize());
    stream.SetPosition(0);
    stream >> bytes;
    stream.SetPosition(position);
    return bytes;
}

}  // namespace test
