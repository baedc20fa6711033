#include "benchmarks/IPP_peers.h"

#include <memory>
#include <stdexcept>

#if CV_PEER_HIGHWAY
#include "benchmarks/IPP_highway.h"
#endif
#if CV_PEER_VOLK
#include <volk/volk.h>
#endif
#if CV_PEER_SAMPLERATE
#include <samplerate.h>
#endif
#if CV_PEER_SWRESAMPLE
extern "C" {
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}
#endif

namespace bench {
namespace {

template <typename From, typename To>
using Peers = std::vector<PeerConversion<From, To>>;

#if CV_PEER_SWRESAMPLE

template <typename T>
const AVSampleFormat SAMPLE_FORMAT = AV_SAMPLE_FMT_NONE;
template <>
const AVSampleFormat SAMPLE_FORMAT<short> = AV_SAMPLE_FMT_S16;
template <>
const AVSampleFormat SAMPLE_FORMAT<int> = AV_SAMPLE_FMT_S32;
template <>
const AVSampleFormat SAMPLE_FORMAT<float> = AV_SAMPLE_FMT_FLT;
template <>
const AVSampleFormat SAMPLE_FORMAT<double> = AV_SAMPLE_FMT_DBL;

/// One channel, the rate as it is: what remains is the conversion.
template <typename From, typename To>
PeerConversion<From, To> swresample() {
    const int rate = 48000;
    AVChannelLayout mono{};
    av_channel_layout_default(&mono, 1);
    SwrContext* made = nullptr;
    if (swr_alloc_set_opts2(&made, &mono, SAMPLE_FORMAT<To>, rate, &mono, SAMPLE_FORMAT<From>, rate, 0, nullptr) < 0 ||
        swr_init(made) < 0) {
        throw std::runtime_error("libswresample cannot be set up");
    }
    const std::shared_ptr<SwrContext> context(made, [](SwrContext* used) { swr_free(&used); });
    return {"libswresample", [context](std::size_t n, const From* src, To* dst) {
                const auto* in = reinterpret_cast<const std::uint8_t*>(src);
                auto* out = reinterpret_cast<std::uint8_t*>(dst);
                swr_convert(context.get(), &out, static_cast<int>(n), &in, static_cast<int>(n));
            }};
}

#endif

template <typename From, typename To>
void addSwresample([[maybe_unused]] Peers<From, To>& peers) {
#if CV_PEER_SWRESAMPLE
    peers.push_back(swresample<From, To>());
#endif
}

#if CV_PEER_VOLK || CV_PEER_SAMPLERATE
unsigned int countOf(std::size_t n) {
    return static_cast<unsigned int>(n);
}
#endif

}  // namespace

template <>
Peers<unsigned char, float> peerConversions() {
    return {};
}

template <>
Peers<short, float> peerConversions() {
    Peers<short, float> peers;
#if CV_PEER_VOLK
    peers.push_back({"VOLK", [](std::size_t n, const short* src, float* dst) {
                         volk_16i_s32f_convert_32f(dst, src, 32768.0F, countOf(n));
                     }});
#endif
#if CV_PEER_SAMPLERATE
    peers.push_back({"libsamplerate", [](std::size_t n, const short* src, float* dst) {
                         src_short_to_float_array(src, dst, static_cast<int>(countOf(n)));
                     }});
#endif
    addSwresample(peers);
    return peers;
}

template <>
Peers<short, double> peerConversions() {
    Peers<short, double> peers;
    addSwresample(peers);
    return peers;
}

template <>
Peers<int, float> peerConversions() {
    Peers<int, float> peers;
#if CV_PEER_HIGHWAY
    peers.push_back({"Highway", highwayIntToFloat});
#endif
#if CV_PEER_VOLK
    peers.push_back({"VOLK", [](std::size_t n, const int* src, float* dst) {
                         volk_32i_s32f_convert_32f(dst, src, 2147483648.0F, countOf(n));
                     }});
#endif
#if CV_PEER_SAMPLERATE
    peers.push_back({"libsamplerate", [](std::size_t n, const int* src, float* dst) {
                         src_int_to_float_array(src, dst, static_cast<int>(countOf(n)));
                     }});
#endif
    addSwresample(peers);
    return peers;
}

template <>
Peers<int, double> peerConversions() {
    Peers<int, double> peers;
    addSwresample(peers);
    return peers;
}

template <>
Peers<float, short> peerConversions() {
    Peers<float, short> peers;
#if CV_PEER_VOLK
    peers.push_back({"VOLK", [](std::size_t n, const float* src, short* dst) {
                         volk_32f_s32f_convert_16i(dst, src, 32768.0F, countOf(n));
                     }});
#endif
#if CV_PEER_SAMPLERATE
    peers.push_back({"libsamplerate", [](std::size_t n, const float* src, short* dst) {
                         src_float_to_short_array(src, dst, static_cast<int>(countOf(n)));
                     }});
#endif
    addSwresample(peers);
    return peers;
}

template <>
Peers<float, int> peerConversions() {
    Peers<float, int> peers;
#if CV_PEER_VOLK
    peers.push_back({"VOLK", [](std::size_t n, const float* src, int* dst) {
                         volk_32f_s32f_convert_32i(dst, src, 2147483648.0F, countOf(n));
                     }});
#endif
#if CV_PEER_SAMPLERATE
    peers.push_back({"libsamplerate", [](std::size_t n, const float* src, int* dst) {
                         src_float_to_int_array(src, dst, static_cast<int>(countOf(n)));
                     }});
#endif
    addSwresample(peers);
    return peers;
}

template <>
Peers<float, double> peerConversions() {
    Peers<float, double> peers;
#if CV_PEER_VOLK
    peers.push_back(
        {"VOLK", [](std::size_t n, const float* src, double* dst) { volk_32f_convert_64f(dst, src, countOf(n)); }});
#endif
    addSwresample(peers);
    return peers;
}

template <>
Peers<double, float> peerConversions() {
    Peers<double, float> peers;
#if CV_PEER_VOLK
    peers.push_back(
        {"VOLK", [](std::size_t n, const double* src, float* dst) { volk_64f_convert_32f(dst, src, countOf(n)); }});
#endif
    addSwresample(peers);
    return peers;
}

}  // namespace bench
