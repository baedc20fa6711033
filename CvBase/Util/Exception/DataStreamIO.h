#pragma once

#include "CvBase/common/common_exception_base.h"

#pragma GCC visibility push(default)

namespace Util {
namespace Exception {

/// A failed read from a data stream: the bytes end before the value does, or a text's length cannot be right. Writing
/// throws no such exception.
///
///     try {
///         stream >> version >> name;
///     } catch (const Util::Exception::DataStreamIO& failure) {
///         log(failure.ToString());  // says what was to be read, and how far the bytes go
///     }
///
/// It carries what every exception of the library carries and nothing more; it is a class of its own so that callers
/// can tell it from failures of files. Its source unit is "Util/ByteStream", or "Util/ByteStream.h" for single numbers,
/// and the line names the operation: 74 and 81 a text, 104 a vector, 123 a block, 141 a number.
class DataStreamIO : public ::Exception::Base {
public:
    /// `message` says in words what could not be read.
    explicit DataStreamIO(const String& message);

    /// Shares the texts, and throws nothing.
    DataStreamIO(const DataStreamIO&) = default;
    DataStreamIO& operator=(const DataStreamIO&) = default;

    ~DataStreamIO() override;

    /// The base's lines, an empty one, and "DataStreamIO" with a line feed.
    [[nodiscard]] String ToString() const override;
};

}  // namespace Exception
}  // namespace Util

#pragma GCC visibility pop
