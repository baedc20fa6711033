// Texts between UTF-8, UTF-16, UTF-32 and Mac OS Roman, against the plainest coders.

#include <vector>

#include "CvBase/common/common_string.h"
#include "fuzz/Fuzz.h"
#include "fuzz/UtfModel.h"

namespace {

using fuzz::expectEqual;

constexpr unsigned int MAC_ROMAN = 2;
constexpr std::size_t LIMIT = 100000;

template <typename Text>
Text untilNul(const Text& text) {
    return text.c_str();
}

void expectText(const char* what, const String& real, const std::optional<std::string>& expected) {
    expectEqual(what, real.IsNull(), !expected);
    expectEqual(what, std::string(real.CStr(), real.Length()), expected.value_or(""));
}

/// Any units, most of them from scripts whose texts take different paths, and sometimes as many as there may be.
template <typename Text>
Text unitsFrom(fuzz::Input& input) {
    using Unit = typename Text::value_type;
    static constexpr char32_t FIRSTS[] = {0x20,   0x40,   0x60,   0xC0,   0xE0,    0x2018,  0x3040,
                                          0x4E00, 0xD7F0, 0xDBF0, 0xFFF0, 0x1F600, 0x10FFF0};
    Text text;
    for (auto runs = input.ConsumeIntegralInRange(0, 5); runs > 0; --runs) {
        const char32_t first = input.PickValueInArray(FIRSTS);
        const auto repeat = input.ConsumeIntegralInRange(1, 4);
        const std::vector<unsigned char> steps =
            input.ConsumeBytes<unsigned char>(input.ConsumeIntegral<unsigned char>() % 64U);
        for (int i = 0; i < repeat; ++i) {
            for (const unsigned char step : steps) {
                text += static_cast<Unit>(step < 0xA0 ? first + step % 32U : first);
            }
        }
        text += input.ConsumeBool() ? Text(1, input.ConsumeIntegral<Unit>()) : Text();
    }
    if (input.ConsumeIntegral<unsigned char>() == 0xFF) {
        text.resize(LIMIT - 2 + input.ConsumeIntegralInRange(0U, 4U), Unit{'a'});
    }
    return text;
}

std::optional<std::string> encoded(const std::optional<std::u32string>& text, unsigned int encoding) {
    if (!text) {
        return std::nullopt;
    }
    return encoding == MAC_ROMAN ? fuzz::encodeMacRoman(*text) : fuzz::encodeUtf8(*text);
}

void fromUtf16(fuzz::Input& input) {
    const auto units = unitsFrom<std::u16string>(input);
    const unsigned int encoding = input.ConsumeIntegralInRange(0U, 3U);
    const std::vector<unsigned short> copy(units.c_str(), units.c_str() + units.size() + 1);
    const std::u16string view = untilNul(units);
    expectText("from UTF-16", String(copy.data(), encoding),
               view.size() < LIMIT ? encoded(fuzz::decodeUtf16(view), encoding) : std::nullopt);
}

void fromUtf32(fuzz::Input& input) {
    const auto units = unitsFrom<std::u32string>(input);
    const std::vector<wchar_t> copy(units.c_str(), units.c_str() + units.size() + 1);
    const std::u32string view = untilNul(units);
    std::optional<std::string> expected = encoded(fuzz::decodeUtf32(view), 1);
    if (view.size() >= LIMIT || (expected && expected->size() > 3 * view.size())) {
        expected.reset();
    }
    expectText("from UTF-32", String(copy.data()), expected);
}

void toUtf16(fuzz::Input& input) {
    const auto units = unitsFrom<std::u16string>(input);
    const unsigned int encoding = input.ConsumeIntegralInRange(0U, 3U);
    std::string bytes = input.ConsumeBool() ? input.ConsumeRandomLengthString() : "";
    bytes += fuzz::encodeUtf8(fuzz::decodeUtf16(units).value_or(U"")) +
             (input.ConsumeBool() ? input.ConsumeRandomLengthString() : "");
    const std::string view = untilNul(bytes);
    const auto characters = encoding == MAC_ROMAN ? fuzz::decodeMacRoman(view) : fuzz::decodeUtf8(view);
    const shared_array<unsigned short> real = String(bytes.c_str()).Unicode(encoding);
    const std::u16string expected = fuzz::encodeUtf16(characters.value_or(U""));
    const bool isRight = characters && expected.size() <= LIMIT;
    expectEqual("whether the text is valid", real.get() != nullptr, isRight);
    for (std::size_t i = 0; isRight && i <= expected.size(); ++i) {
        expectEqual("a unit of UTF-16", real[i], static_cast<unsigned short>(expected.c_str()[i]));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    fuzz::Input input(data, size);
    switch (input.ConsumeIntegralInRange(0, 2)) {
        case 0:
            fromUtf16(input);
            break;
        case 1:
            fromUtf32(input);
            break;
        default:
            toUtf16(input);
    }
    return 0;
}
