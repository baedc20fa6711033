// Every sample conversion, in cache and from memory, beside other libraries and a copy of as many bytes.

#include <cmath>
#include <cstring>

#include "CvBase/IPP/IPP_util_mac.h"
#include "benchmarks/IPP_peers.h"
#include "benchmarks/support/Buffers.h"
#include "benchmarks/support/Main.h"
#include "benchmarks/support/VectorCopy.h"

namespace {

using bench::add;
using bench::destination;
using bench::source;

/// Whether each result is the source times `factor`, give or take one step of an integer and a float's precision.
template <typename From, typename To>
bool isScaled(std::size_t n, double factor) {
    const From* const src = source<From>(n);
    const To* const dst = destination<From, To>(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double wanted = static_cast<double>(src[i]) * factor;
        const double step = std::is_integral_v<To> ? 1.0 : 0.0;
        if (!(std::abs(static_cast<double>(dst[i]) - wanted) <= step + std::abs(wanted) * 1e-6)) {
            return false;
        }
    }
    return true;
}

template <typename From, typename To, typename Convert>
void addConversion(const std::string& name, double factor, Convert convert) {
    for (const std::size_t n : {bench::IN_CACHE, bench::IN_MEMORY}) {
        const std::string work = "IPP/" + name + "/" + std::to_string(n);
        const auto correct = [n, factor] { return isScaled<From, To>(n, factor); };
        add(work, {"CvBase",
                   [n, convert] { convert(static_cast<unsigned int>(n), source<From>(n), destination<From, To>(n)); },
                   correct,
                   {}});
        for (const auto& peer : bench::peerConversions<From, To>()) {
            add(work, {peer.name, [n, peer] { peer.convert(n, source<From>(n), destination<From, To>(n)); }, correct});
        }
        const auto copy = n == bench::IN_CACHE ? bench::vectorCopy : bench::streamingCopy;
        add(work, {"copy",
                   [n, copy] { copy(source<From>(n), n * sizeof(From), destination<From, To>(n), n * sizeof(To)); },
                   [] { return true; },
                   {}});
    }
}

template <typename To>
void addRounding(const std::string& name, double factor, int scale) {
    for (const bool round : {false, true}) {
        addConversion<float, To>(
            name + (round ? "-rounded" : "-truncated"), factor,
            [scale, round](unsigned int n, const float* src, To* dst) { IPP::Convert(n, src, dst, scale, round); });
    }
}

template <typename From, typename To>
void addPlain(const std::string& name) {
    addConversion<From, To>(name, 1.0, [](unsigned int n, const From* src, To* dst) { IPP::Convert(n, src, dst); });
}

template <typename From, typename To>
void addScaled(const std::string& name, int scale) {
    addConversion<From, To>(name, std::ldexp(1.0, -scale),
                            [scale](unsigned int n, const From* src, To* dst) { IPP::Convert(n, src, dst, scale); });
}

[[maybe_unused]] const bool added = [] {
    addPlain<unsigned char, float>("byte-to-float");
    addScaled<short, float>("short-to-float", 15);
    addScaled<short, double>("short-to-double", 15);
    addScaled<int, float>("int-to-float", 31);
    addScaled<int, double>("int-to-double", 31);
    addRounding<short>("float-to-short", 32768.0, -15);
    addRounding<int>("float-to-int", 2147483648.0, -31);
    addPlain<float, double>("float-to-double");
    addPlain<double, float>("double-to-float");
    return true;
}();

}  // namespace
