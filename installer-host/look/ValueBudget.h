#pragma once

#include <cstdint>
#include <string_view>

#include "platform/PropertyList/Value.h"

namespace host {

/// What may be taken apart of property lists for one report. A file of half a megabyte can refer to one text half a
/// million times, and a root can hold many such files.
class ValueBudget {
public:
    /// Accounts for the keys and values of the file at `path`. False when they take more than is left: then nothing is
    /// accounted for, and the file is not to be taken apart.
    bool spend(std::string_view path, const cv::plist::Dictionary& keys);

private:
    static constexpr std::uint64_t MOST_BYTES = std::uint64_t{1536} << 20U;

    std::uint64_t left_ = MOST_BYTES;
};

}  // namespace host
