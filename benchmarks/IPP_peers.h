#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// The conversions of other libraries, for full-scale samples: ±1.0 is the full scale of the integers.
namespace bench {

template <typename From, typename To>
struct PeerConversion {
    std::string name;
    std::function<void(std::size_t n, const From* src, To* dst)> convert;
};

/// The libraries that this was built with and that have the conversion.
template <typename From, typename To>
std::vector<PeerConversion<From, To>> peerConversions();

}  // namespace bench
