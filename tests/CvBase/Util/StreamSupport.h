#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CvBase/Util/ByteStream.h"
#include "CvBase/Util/Exception/DataStreamIO.h"

namespace test {

using Bytes = std::vector<unsigned char>;

/// All bytes of `stream`, which stays where it is.
inline Bytes bytesOf(Util::DataStream& stream) {
    unsigned int const position = stream.GetPosition();
    Bytes bytes(stream.GetSize());
    stream.SetPosition(0);
    stream >> bytes;
    stream.SetPosition(position);
    return bytes;
}

/// Expects that `action` throws a DataStreamIO with `message` out of `line` of `unit`.
template <class Action>
void expectStreamFailure(const Action& action, const std::string& message, const std::string& unit, int line) {
    try {
        action();
        ADD_FAILURE() << "nothing was thrown, not " << message;
    } catch (const Util::Exception::DataStreamIO& caught) {
        EXPECT_STREQ(caught.GetMessage().CStr(), message.c_str());
        EXPECT_STREQ(caught.GetSourceFile().CStr(), unit.c_str());
        EXPECT_EQ(caught.GetLine(), line);
        EXPECT_EQ(caught.GetOSErrorAtThrow(), 0);
    }
}

}  // namespace test
