#include <CoreFoundation/CFLocale.h>
#include <unicode/localpointer.h>
#include <unicode/uloc.h>
#include <unicode/ures.h>

#include <array>
#include <cstdlib>
#include <initializer_list>
#include <new>
#include <optional>
#include <string>

#include "platform/CoreFoundation/String.h"

// ICU's resource bundles answer, which its common library reads. Its number formats would say the same, but their
// library takes longer to load than all else that a small program of text does.

namespace {

const __CFString DECIMAL_SEPARATOR_KEY(u"kCFLocaleDecimalSeparatorKey");

extern const objc_class LOCALE_CLASS;

}  // namespace

/// The values of one locale.
struct __CFLocale : objc_object {
    explicit __CFLocale(cv::Owned<__CFString> separator)
        : objc_object(LOCALE_CLASS), decimalSeparator(std::move(separator)) {}

    const cv::Owned<__CFString> decimalSeparator;  ///< may be null
};

const CFStringRef kCFLocaleDecimalSeparator = &DECIMAL_SEPARATOR_KEY;

namespace {

const objc_class LOCALE_CLASS("NSLocale", cv::OBJECT_METACLASS, &cv::OBJECT_CLASS, nullptr,
                              cv::identityOf<__CFLocale>());

constexpr const char* ROOT = "root";

void throwWithoutMemory(UErrorCode error) {
    if (error == U_MEMORY_ALLOCATION_ERROR) {
        throw std::bad_alloc();
    }
}

/// The user's locale for numbers as the environment names it, "C" when it names none.
const char* environmentLocale() {
    for (const char* variable : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') {
            return value;
        }
    }
    return "C";
}

/// The same in ICU's spelling. A name without a known language is the POSIX locale, as it is for setlocale; ICU by
/// itself would take the locale of another variable.
std::string localeName() {
    std::array<char, ULOC_FULLNAME_CAPACITY> name{};
    UErrorCode error = U_ZERO_ERROR;
    uloc_canonicalize(environmentLocale(), name.data(), name.size() - 1, &error);
    return U_SUCCESS(error) && *uloc_getISO3Language(name.data()) != '\0' ? name.data() : "en_US_POSIX";
}

/// The locale whose own bundle ICU has and that stands for `name`: aliases followed, parts that add nothing dropped.
std::string bundleName(const std::string& name) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::LocalUResourceBundlePointer bundle(ures_open(nullptr, name.c_str(), &error));
    throwWithoutMemory(error);
    const bool isKnown = U_SUCCESS(error) && error != U_USING_DEFAULT_WARNING;
    const char* const actual = isKnown ? ures_getLocaleByType(bundle.getAlias(), ULOC_ACTUAL_LOCALE, &error) : nullptr;
    return actual != nullptr ? actual : ROOT;
}

std::optional<std::u16string> textOf(const UResourceBundle* resource, UErrorCode& error) {
    std::int32_t length = 0;
    const UChar* const text = ures_getString(resource, &length, &error);
    throwWithoutMemory(error);
    return U_SUCCESS(error) ? std::optional(std::u16string(text, static_cast<std::size_t>(length))) : std::nullopt;
}

using Keys = std::initializer_list<const char*>;

/// The text at the end of the path of `keys` in the bundle of `locale` alone.
std::optional<std::u16string> ownText(const std::string& locale, Keys keys) {
    UErrorCode error = U_ZERO_ERROR;
    icu::LocalUResourceBundlePointer place(ures_openDirect(nullptr, locale.c_str(), &error));
    for (const char* key : keys) {
        place.adoptInstead(ures_getByKey(place.getAlias(), key, nullptr, &error));
    }
    return textOf(place.getAlias(), error);
}

std::string inAscii(const std::u16string& text) {
    std::string ascii;
    for (const char16_t unit : text) {
        ascii += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return ascii;
}

/// The locale that says what `locale` leaves out; empty for the root.
std::string parentOf(const std::string& locale) {
    if (locale == ROOT) {
        return {};
    }
    if (const auto named = ownText(locale, {"%%Parent"})) {
        return inAscii(*named);
    }
    std::array<char, ULOC_FULLNAME_CAPACITY> parent{};
    UErrorCode error = U_ZERO_ERROR;
    uloc_getParent(locale.c_str(), parent.data(), parent.size() - 1, &error);
    return U_SUCCESS(error) && parent[0] != '\0' ? parent.data() : ROOT;
}

/// The text at the end of the path, from the nearest of `locale` and its parents that has one.
std::optional<std::u16string> inheritedText(const std::string& locale, Keys keys) {
    for (std::string place = locale; !place.empty(); place = parentOf(place)) {
        if (auto text = ownText(place, keys)) {
            return text;
        }
    }
    return std::nullopt;
}

/// How the locale writes numbers: what its name asks for ("ar_EG@numbers=latn"), else what it has by default.
std::string numberingSystem(const std::string& name, const std::string& bundle) {
    std::array<char, ULOC_KEYWORDS_CAPACITY> asked{};
    UErrorCode error = U_ZERO_ERROR;
    uloc_getKeywordValue(name.c_str(), "numbers", asked.data(), asked.size() - 1, &error);
    if (U_SUCCESS(error) && asked[0] != '\0') {
        return asked.data();
    }
    const auto usual = inheritedText(bundle, {"NumberElements", "default"});
    return usual ? inAscii(*usual) : "latn";
}

cv::Owned<__CFString> copyDecimalSeparator(const std::string& name) {
    const std::string bundle = bundleName(name);
    const std::string system = numberingSystem(name, bundle);
    auto text = inheritedText(bundle, {"NumberElements", system.c_str(), "symbols", "decimal"});
    if (!text) {
        text = inheritedText(bundle, {"NumberElements", "latn", "symbols", "decimal"});
    }
    return cv::Owned<__CFString>(text ? __CFString::make(*text) : nullptr);
}

}  // namespace

CFLocaleRef CFLocaleCopyCurrent() {
    return new __CFLocale(copyDecimalSeparator(localeName()));
}

CFTypeRef CFLocaleGetValue(CFLocaleRef locale, CFStringRef key) {
    return CFEqual(key, kCFLocaleDecimalSeparator) ? locale->decimalSeparator.get() : nullptr;
}
