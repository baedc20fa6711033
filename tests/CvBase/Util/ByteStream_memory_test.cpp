// Memory exhaustion: a stream that cannot grow is as it was. Each allocation of each operation fails once.

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "tests/CvBase/Util/StreamSupport.h"
#include "tests/support/FailingAllocations.h"

namespace {

using test::Bytes;
using Util::ByteStream;

TEST(ByteStreamMemory, AFailedWriteChangesNothing) {
    const Bytes many(1000, 7);
    const String text("A text that no small buffer can hold, to be written with its length");
    const std::vector<std::function<void(ByteStream&)>> writes = {
        [](ByteStream& stream) { stream << 1; },
        [](ByteStream& stream) { stream << 1.0; },
        [&](ByteStream& stream) { stream << text; },
        [&](ByteStream& stream) { stream << many; },
        [&](ByteStream& stream) { stream.Write(1000, many.data()); },
    };
    const Bytes original{1, 2, 3, 4, 5, 6};
    for (const auto& write : writes) {
        // Inside the stream, at its end, and beyond a gap; with memory left for the length of a text, or for nothing.
        for (const unsigned int position : {5U, 6U, 300U}) {
            for (const unsigned int reserved : {6U, 11U}) {
                ByteStream stream(reserved);
                stream << original;
                stream.SetPosition(position);
                int failures = 0;
                test::exhaustMemory([&] { write(stream); },
                                    [&] {
                                        ++failures;
                                        ASSERT_EQ(stream.GetPosition(), position);
                                        ASSERT_EQ(test::bytesOf(stream), original);
                                    });
                EXPECT_GT(stream.GetPosition(), position);
                EXPECT_TRUE(failures > 0 || reserved == 11) << "the write allocated nothing";
            }
        }
    }
}

TEST(ByteStreamMemory, WhatWritesNothingAsksForNothing) {
    ByteStream stream(0);
    stream.SetWriteStringLength(false);
    stream.SetPosition(~0U);
    const String empty("");
    test::failAfter(0);
    EXPECT_NO_THROW(stream << empty << Bytes());
    test::failAfter(-1);
    EXPECT_EQ(stream.GetSize(), 0U);
}

TEST(ByteStreamMemory, AFailedTextReadLeavesTheTextEmpty) {
    const String written("A text that no small buffer of std::string can hold");
    ByteStream stream(0);
    stream << written;
    String text;
    test::exhaustMemory(
        [&] {
            stream.SetPosition(0);
            text = "before";
            stream >> text;
        },
        [&] { ASSERT_TRUE(text.IsEmpty() || text == "before"); });
    EXPECT_EQ(text, written);
}

}  // namespace
