// Texts between UTF-8, UTF-16, UTF-32 and Mac OS Roman, against the plainest coders.

#include <vector>

#include "CvBase/common/common_string.h"
#include "fuzz/Fuzz.h"
#include "fuzz/UtfModel.h"

namespace {

using fuzz::expectEqual;

constexpr unsigned int MAC_ROMAN = 2;
constexpr std::size_t LIMIT = 100000;

/// Any units up to a 0, most of them from scripts whose texts take different paths, and sometimes as many as there may
/// be.
template <typename Text>
Text unitsFrom(fuzz::Input& input) {
    using Unit = typename Text::value_type;
    static constexpr char32_t FIRSTS[] = {0x20,   0x60,   0xC0,   0xE0,   0x2018,  0x3040,
                                          0x4E00, 0xD7F0, 0xDBF0, 0xFFF0, 0x1F600, 0x10FFF0};
    Text text;
    for (auto runs = input.ConsumeIntegralInRange(0, 6); runs > 0; --runs) {
        const char32_t first = input.PickValueInArray(FIRSTS);
        for (const unsigned char step : input.ConsumeBytes<unsigned char>(input.ConsumeIntegralInRange(0U, 70U))) {
            text += static_cast<Unit>(step < 0xA0 ? first + step % 32U : first);
        }
        text += input.ConsumeBool() ? Text(1, input.ConsumeIntegral<Unit>()) : Text();
    }
    if (input.ConsumeIntegral<unsigned char>() == 0xFF) {
        text.resize(LIMIT - 2 + input.ConsumeIntegralInRange(0U, 4U), Unit{'a'});
    }
    return text.c_str();
}

std::optional<std::string> encoded(const std::optional<std::u32string>& text, unsigned int encoding) {
    if (!text) {
        return std::nullopt;
    }
    return encoding == MAC_ROMAN ? fuzz::encodeMacRoman(*text) : fuzz::encodeUtf8(*text);
}

void expectText(const char* what, const String& real, const std::optional<std::string>& expected) {
    expectEqual(what, real.IsNull(), !expected);
    expectEqual(what, std::string(real.CStr(), real.Length()), expected.value_or(""));
}

void fromUtf16(fuzz::Input& input, unsigned int encoding) {
    const auto units = unitsFrom<std::u16string>(input);
    const std::vector<unsigned short> copy(units.c_str(), units.c_str() + units.size() + 1);
    expectText("from UTF-16", String(copy.data(), encoding),
               units.size() < LIMIT ? encoded(fuzz::decodeUtf16(units), encoding) : std::nullopt);
}

void fromUtf32(fuzz::Input& input, unsigned int /*encoding*/) {
    const auto units = unitsFrom<std::u32string>(input);
    const std::vector<wchar_t> copy(units.c_str(), units.c_str() + units.size() + 1);
    const std::optional<std::string> expected = encoded(fuzz::decodeUtf32(units), 1);
    const bool fits = units.size() < LIMIT && expected.value_or("").size() <= 3 * units.size();
    expectText("from UTF-32", String(copy.data()), fits ? expected : std::nullopt);
}

void toUtf16(fuzz::Input& input, unsigned int encoding) {
    const auto units = unitsFrom<std::u16string>(input);
    std::string bytes = fuzz::encodeUtf8(fuzz::decodeUtf16(units).value_or(U""));
    bytes.insert(input.ConsumeIntegralInRange<std::size_t>(0, bytes.size()), input.ConsumeRandomLengthString());
    bytes = bytes.c_str();
    const auto characters =
        encoding == MAC_ROMAN ? std::optional(fuzz::decodeMacRoman(bytes)) : fuzz::decodeUtf8(bytes);
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
    static constexpr void (*CONVERSIONS[])(fuzz::Input&, unsigned int) = {fromUtf16, fromUtf32, toUtf16};
    fuzz::Input input(data, size);
    const auto conversion = input.PickValueInArray(CONVERSIONS);
    conversion(input, input.ConsumeIntegralInRange(0U, 3U));
    return 0;
}
