#pragma once

#include "CvBase/Util/ByteStream.h"
#include "tests/support/Test.h"

namespace test {

using Util::ByteStream;
using Util::DataStream;
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
