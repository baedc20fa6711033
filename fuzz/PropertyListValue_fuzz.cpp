// Any value, in the binary form that the code under test writes and in the plainest XML, and read again.

#include <cmath>

#include "fuzz/PropertyListText.h"
#include "fuzz/UtfModel.h"

namespace {

using namespace cv::plist;

std::string textFrom(fuzz::Input& input) {
    std::u32string text;
    for (auto count = input.ConsumeIntegralInRange(0, 12); count > 0; --count) {
        const auto c = input.ConsumeIntegralInRange<char32_t>(0, input.ConsumeBool() ? 0xFF : 0x10FFFF);
        text += c >= 0xD800 && c < 0xE000 ? U'\n' : c;
    }
    return fuzz::encodeUtf8(text);
}

Value scalarFrom(fuzz::Input& input) {
    const auto bits = input.ConsumeIntegral<std::uint64_t>() >> input.ConsumeIntegralInRange(0, 63);
    const double number = input.ConsumeFloatingPoint<double>();
    const auto seconds = static_cast<double>(static_cast<std::int64_t>(bits % 300'000'000'000));
    const Value values[] = {{bits % 2 == 0},
                            {Integer{bits, false}},
                            {Integer{bits | std::uint64_t{1} << 63, true}},
                            {Real{number, false}},
                            {Real{static_cast<float>(std::fmod(number, 1e38)), true}},
                            {Date{input.ConsumeBool() ? number : seconds - 63'000'000'000}},
                            {Data{input.ConsumeRandomLengthString(80)}},
                            {Uid{bits % 0xFFFFFFFF}},
                            {textFrom(input)}};
    return input.PickValueInArray(values);
}

Value valueFrom(fuzz::Input& input, int depth) {
    const auto kind = depth > 0 ? input.ConsumeIntegralInRange(0, 4) : 0;
    if (kind < 3) {
        return scalarFrom(input);
    }
    Array items;
    Dictionary entries;
    for (auto count = input.ConsumeIntegralInRange(0, 6); count > 0; --count) {
        items.push_back(valueFrom(input, depth - 1));
        entries.insert_or_assign(textFrom(input), items.back());
    }
    return kind == 3 ? Value{items} : Value{entries};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    fuzz::Input input(data, size);
    const Value value = valueFrom(input, 5);
    const fuzz::PropertyListText text = fuzz::textOf(value);
    fuzz::trace() = " " + text.text;
    fuzz::expectReadAs(toBinary(value), text.text);
    if (text.isXml) {
        fuzz::expectReadAs("<plist version=\"1.0\">" + text.text + "</plist>", text.text);
    }
    return 0;
}
