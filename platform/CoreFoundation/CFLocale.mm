#include <CoreFoundation/CFLocale.h>
#include <CoreFoundation/CFString.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <cstdlib>
#include <string>

#include "platform/CoreFoundation/Bridge.h"

// ICU answers, not NSLocale: that raises where no user database is, as in a private root, and costs some thirty
// milliseconds at the start of every process.

/// The values of one locale.
@interface CvLocale : NSObject {
   @public
    CFStringRef decimalSeparator_;  ///< owned; null when ICU knows none
}
@end

@implementation CvLocale

- (void)dealloc {
    if (decimalSeparator_ != nullptr) {
        CFRelease(decimalSeparator_);
    }
    [super dealloc];
}

@end

const CFLocaleKey kCFLocaleDecimalSeparator = reinterpret_cast<CFLocaleKey>(@"kCFLocaleDecimalSeparatorKey");

namespace {

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
    char name[ULOC_FULLNAME_CAPACITY] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_canonicalize(environmentLocale(), name, sizeof name - 1, &error);
    return U_SUCCESS(error) && *uloc_getISO3Language(name) != '\0' ? name : "en_US_POSIX";
}

/// The decimal separator of `locale`, to be released; null when ICU knows none.
CFStringRef copyDecimalSeparator(const std::string& locale) {
    constexpr std::int32_t LONGEST = 16;
    UChar units[LONGEST];
    UErrorCode error = U_ZERO_ERROR;
    const icu::LocalUNumberFormatPointer format(unum_open(UNUM_DECIMAL, nullptr, 0, locale.c_str(), nullptr, &error));
    const std::int32_t count = unum_getSymbol(format.getAlias(), UNUM_DECIMAL_SEPARATOR_SYMBOL, units, LONGEST, &error);
    return U_SUCCESS(error) && count <= LONGEST
               ? CFStringCreateWithCharacters(kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units), count)
               : nullptr;
}

}  // namespace

CFLocaleRef CFLocaleCopyCurrent() {
    CvLocale* locale = [CvLocale new];
    locale->decimalSeparator_ = copyDecimalSeparator(localeName());
    return cv::reference<CFLocaleRef>(locale);
}

CFTypeRef CFLocaleGetValue(CFLocaleRef locale, CFLocaleKey key) {
    return CFEqual(key, kCFLocaleDecimalSeparator) ? cv::object<CvLocale*>(locale)->decimalSeparator_ : nullptr;
}
