#pragma once

#include "CvBase/common/common_exception_base.h"

namespace Util {
namespace Exception {

/// A failed read from a data stream. It differs from the root in its type, so that it can be caught apart.
class __attribute__((visibility("default"))) DataStreamIO : public ::Exception::Base {
public:
    explicit DataStreamIO(const String& message);
    DataStreamIO(const DataStreamIO&) = default;
    DataStreamIO& operator=(const DataStreamIO&) = default;
    ~DataStreamIO() override;

    /// The base's lines and the kind.
    String ToString() const override;
};

}  // namespace Exception
}  // namespace Util
