#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "CvBase/common/common_char.h"
#include "CvBase/common/common_checked_types.h"
#include "CvBase/common/common_smart_ptr.h"

#pragma GCC visibility push(default)

/// Text: bytes that are UTF-8 by convention, shared by all copies of a String. Positions and lengths are counts of
/// bytes.
///
///     String name("report.txt");
///     name.Insert(0, "old ");                      // changes name
///     const String upper = name.ToUpper();         // leaves name as it is
///     const String message = String("%1 of %2").Arg(upper).Arg(7);
///
/// A String is two pointers: to its text, and to the count of the Strings that share it. A copy shares the text until
/// one of the two is modified, and costs one atomic increment. A String never changes bytes that another String shares.
/// An operation that changes a String builds a new text first and then adopts it, so std::bad_alloc leaves the String
/// unchanged. Any operation that makes a text may throw that, and on a 32-bit processor std::length_error for a text of
/// 2 GiB or more; nothing else is thrown. Different threads may use different copies of a text, but no two threads one
/// String.
///
/// A String is null (there is no text) or holds a text, which may be empty. Both have length 0, read as "" and compare
/// equal; each operation says which of the two it returns.
///
/// NUL bytes count in the length, and Left, Mid and Right work with them. What reads the text as a C string sees only
/// the bytes before the first NUL, called the view below.
class String {
public:
    /// For Number and Arg of a floating-point value: as many decimals as printf writes by default, 6.
    static constexpr unsigned int NO_PRECISION = 0xFFFFFFFF;

    /// @name Construction
    /// @{

    /// Null.
    String();
    String(std::nullptr_t);

    /// The bytes of `s` up to its NUL, whatever they are; null when `s` is null.
    String(const char* s);

    /// The first bytes of `s` up to its NUL, at most `maxLength` of them, beyond which nothing is read; null when `s`
    /// is null.
    String(const char* s, unsigned int maxLength);

    /// A text of one byte, which may be NUL. Beware: an int converts to char silently, so String(65) is "A".
    String(char c);
    String(const Char& c);

    /// NUL-terminated UTF-16, converted to UTF-8, or to Mac OS Roman when `encoding` is 2. Null when `utf16` is null,
    /// has 100000 units or more, has an unpaired surrogate, or has a character that the encoding lacks.
    String(const unsigned short* utf16, unsigned int encoding = 1);

    /// NUL-terminated UTF-32, converted to UTF-8; `s` must not be null. Null when there are 100000 units or more, or
    /// one of them is not a character. Null, too, when the text needs more than three bytes a unit on average: a
    /// character beyond U+FFFF needs four, so it fits only beside shorter ones.
    String(const wchar_t* s);

    /// Shares the text.
    String(const String& other) noexcept = default;
    String& operator=(const String& other) noexcept = default;

    /// Swaps the texts: afterwards `other` holds the old text of this String. So a vector moves its elements about
    /// without counting. There is no move constructor, because every String, even a null one, has a count.
    String& operator=(String&& other) noexcept {
        text_.swap(other.text_);
        return *this;
    }

    /// Gives up its share of the text.
    ~String() = default;

    /// As `*this = String(s)`: a null `s` makes this null.
    String& operator=(const char* s);

    /// As `*this = String(s, maxLength)`, without making that String.
    String& Assign(const char* s, unsigned int maxLength);

    /// @}
    /// @name The text
    /// @{

    /// The number of bytes, embedded NULs included; 0 when null.
    [[nodiscard]] unsigned int Length() const { return IsNull() ? 0 : static_cast<unsigned int>(text_->size()); }

    /// The bytes and a NUL after them; "" when null. Valid as long as a String holds this text: until the last of those
    /// that share it is changed or destroyed.
    [[nodiscard]] const char* CStr() const { return IsNull() ? "" : text_->c_str(); }

    /// Whether the length is 0.
    [[nodiscard]] bool IsEmpty() const { return Length() == 0; }

    /// Whether there is no text at all.
    [[nodiscard]] bool IsNull() const { return text_.get() == nullptr; }

    /// How many Strings hold this text, this one included; at least 1.
    [[nodiscard]] unsigned int UseCount() const { return text_.use_count(); }

    /// Whether the two share one text, as copies do; equal texts need not be shared.
    [[nodiscard]] bool SharesTextWith(const String& other) const { return text_.count() == other.text_.count(); }

    /// The view, converted to NUL-terminated UTF-16 from UTF-8, or from Mac OS Roman when `encoding` is 2. A byte order
    /// mark at the beginning of UTF-8 is left out. Returns an empty handle when the bytes are not valid in that
    /// encoding or give more than 100000 units, and a single 0 when there is nothing to convert. Use the array and its
    /// copies on the calling thread only.
    [[nodiscard]] shared_array<unsigned short> Unicode(unsigned int encoding = 1) const;

    /// "\n".
    [[nodiscard]] static String GetPlatformLinefeed();

    /// @}
    /// @name Changing this String
    /// @{

    /// Appends all bytes of `rhs`. A null or empty `rhs` changes nothing; a null or empty String then shares the text
    /// of `rhs`.
    String& operator+=(const String& rhs);

    /// Appends the byte `c`, which may be NUL.
    String& operator+=(char c);

    /// Cuts the text to `length` bytes or pads it with NUL bytes; a null String becomes non-null. With `keepUtf8Whole`,
    /// if the cut splits a UTF-8 sequence, what is left of that sequence becomes NUL bytes; the length is still
    /// `length`.
    void Resize(unsigned int length, bool keepUtf8Whole = false);

    /// Resize(length, true) when the text is longer, else nothing.
    void Truncate(unsigned int length);

    /// Puts `s` in front of byte `pos`, or at the end when `pos` is past it.
    String& Insert(unsigned int pos, const String& s);

    /// Removes `count` bytes from `pos` on, or all of them when `count` is unset. Nothing happens when `pos` is at the
    /// end or past it, or `count` is 0. `pos + count` wraps at 32 bits: "abcde".Remove(2, 0xFFFFFFFF) gives "abbcde".
    String& Remove(unsigned int pos, const checked_value<unsigned int>& count = {});

    /// @}
    /// @name Searching
    /// A result is unset when nothing is found, as in every search that starts at the end or past it. If
    /// `caseSensitive` is false, ASCII letters match in either case.
    /// @{

    /// The first position from `start` on that holds `c`.
    [[nodiscard]] checked_value<unsigned int> Find(char c, unsigned int start = 0, bool caseSensitive = true) const;

    /// The last position that holds `c`, up to and including `start`, or up to the end when `start` is unset.
    [[nodiscard]] checked_value<unsigned int> FindRev(char c, const checked_value<unsigned int>& start = {},
                                                      bool caseSensitive = true) const;

    /// Where `needle` first begins at or after `start`, before the next NUL byte; an empty one is found at `start`. If
    /// `caseSensitive` is false, only the view is searched, and a null `needle` counts as empty. Otherwise `needle`
    /// must not be null.
    [[nodiscard]] checked_value<unsigned int> Find(const char* needle, unsigned int start = 0,
                                                   bool caseSensitive = true) const;

    /// Whether the first, or the last, bytes are those of the argument, compared as ==, that is, up to the first NUL
    /// byte. True for an empty argument.
    [[nodiscard]] bool BeginsWith(const String& prefix, bool caseSensitive = true) const;
    [[nodiscard]] bool EndsWith(const String& suffix, bool caseSensitive = true) const;

    /// @}
    /// @name Pieces
    /// These leave this String as it is.
    /// @{

    /// The first, or the last, `n` bytes, or all there are; null when this is null. These and Mid may cut a UTF-8
    /// sequence.
    [[nodiscard]] String Left(unsigned int n) const;
    [[nodiscard]] String Right(unsigned int n) const;

    /// The bytes from `pos`, `count` of them or as many as there are, or all when `count` is unset. Null when `pos` is
    /// at the end or past it.
    [[nodiscard]] String Mid(unsigned int pos, const checked_value<unsigned int>& count = {}) const;

    /// @}
    /// @name Changed copies
    /// These leave this String as it is and return the changed text.
    /// @{

    /// The view with its ASCII letters in upper, or lower, case; null when the text begins with a NUL byte. Other bytes
    /// stay. For a null or an empty String, ToUpper returns a copy that shares its text, and ToLower a new String that
    /// is null or empty as well.
    [[nodiscard]] String ToUpper() const;
    [[nodiscard]] String ToLower() const;

    /// Without the white space at both ends; shares the text when there is none. Empty when there is nothing else.
    [[nodiscard]] String StripWhiteSpace() const;

    /// Without the white space at both ends, and with one blank for each run of white space inside. If the last UTF-8
    /// sequence loses its end because that byte (0xA0) counts as white space, the rest of it becomes NUL bytes, as in
    /// Resize. Empty when there is nothing else; a null String stays null.
    [[nodiscard]] String SimplifyWhiteSpace() const;

    /// Sets `out` to the fields between the separators, always one more than there are separators. Empty fields are
    /// kept; the one after a trailing separator is null. This String may be an element of `out`. After std::bad_alloc
    /// `out` holds some of the fields.
    void Split(char separator, std::vector<String>& out) const;

    /// The parts with `separator` between them. Null when there are no bytes to join. When only one of the parts and
    /// separators has bytes, shares its text.
    [[nodiscard]] static String Join(const String& separator, const std::vector<String>& parts);

    /// Every `from` replaced by `to`, from left to right; null when that leaves nothing. Shares the text when `from` is
    /// null or empty. A `from` that contains a NUL byte matches where the text has the bytes before the NUL and the NUL
    /// itself; the bytes after the NUL match any others. If such a `from` is longer than the whole text by two bytes or
    /// more, the end of the text counts as that NUL.
    [[nodiscard]] String Replace(const String& from, const String& to) const;

    /// Every byte `from` replaced by `to`; never null. The result ends before the first NUL byte of the text. If a byte
    /// `from` follows that NUL, the result instead ends with the last such byte replaced, and every byte between that
    /// was not `from` is NUL.
    [[nodiscard]] String ReplaceChar(const Char& from, const Char& to) const;

    /// @}
    /// @name Numbers as text
    /// `long` is a 32-bit number here, as on the 32-bit Mac: only the lower 32 bits of it are looked at. Pass 64-bit
    /// values as (unsigned) long long.
    /// @{

    /// `value` in `base`, 2 to 36 with upper-case letters, or 10 for any other: "-" if it is negative, then the digits,
    /// with zeros in front up to `width`. The least value, -2147483648, is rendered in two parts, its last digit and
    /// the digits before it, and each is padded to `width`: with a width of 3 in base 10 it is "-214748364008".
    [[nodiscard]] static String Number(int value, unsigned int base = 10,
                                       const checked_value<unsigned int>& width = {});
    [[nodiscard]] static String Number(long value, unsigned int base = 10,
                                       const checked_value<unsigned int>& width = {});
    [[nodiscard]] static String Number(unsigned int value, unsigned int base = 10,
                                       const checked_value<unsigned int>& width = {});
    [[nodiscard]] static String Number(unsigned long value, unsigned int base = 10,
                                       const checked_value<unsigned int>& width = {});

    /// `value` as upper-case hexadecimal when `base` is 16, as decimal for any other; at least `width` digits with
    /// zeros in front. A negative value is its two's complement in hexadecimal, with a "-" before it when there is a
    /// width.
    [[nodiscard]] static String Number(long long value, unsigned int base = 10,
                                       const checked_value<unsigned int>& width = {});
    [[nodiscard]] static String Number(unsigned long long value, unsigned int base = 10,
                                       const checked_value<unsigned int>& width = {});

    /// `value` as printf writes it, with `precision` decimals and the conversion letter `format`. A `precision` above
    /// 99 counts as 99. `format` is one of f F e E g G; when it is unset or anything else it is f. The decimal
    /// separator is the user's.
    [[nodiscard]] static String Number(double value, unsigned int precision = NO_PRECISION,
                                       const checked_value<unsigned int>& format = {});
    [[nodiscard]] static String Number(float value, unsigned int precision = NO_PRECISION,
                                       const checked_value<unsigned int>& format = {});

    /// @}
    /// @name Filling a template
    /// @{

    /// The template with the lowest-numbered placeholder, %0 to %9, replaced by `value`. Only the first one with that
    /// number is replaced. Without a placeholder, `value` is appended. "%%" is not an escape, and "%10" is "%1" and a
    /// '0'. A placeholder in `value` is left for the next call to replace.
    [[nodiscard]] String Arg(const String& value) const;
    [[nodiscard]] String Arg(const char* s) const;
    [[nodiscard]] String Arg(char c) const;
    [[nodiscard]] String Arg(const Char& c) const;

    /// Arg with the number as Number renders it; short and unsigned short as int.
    [[nodiscard]] String Arg(int v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    [[nodiscard]] String Arg(long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    [[nodiscard]] String Arg(short v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    [[nodiscard]] String Arg(unsigned short v, unsigned int base = 10,
                             const checked_value<unsigned int>& width = {}) const;
    [[nodiscard]] String Arg(unsigned int v, unsigned int base = 10,
                             const checked_value<unsigned int>& width = {}) const;
    [[nodiscard]] String Arg(unsigned long v, unsigned int base = 10,
                             const checked_value<unsigned int>& width = {}) const;
    [[nodiscard]] String Arg(long long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    [[nodiscard]] String Arg(unsigned long long v, unsigned int base = 10,
                             const checked_value<unsigned int>& width = {}) const;
    [[nodiscard]] String Arg(double v, unsigned int precision = NO_PRECISION,
                             const checked_value<unsigned int>& format = {}) const;
    [[nodiscard]] String Arg(float v, unsigned int precision = NO_PRECISION,
                             const checked_value<unsigned int>& format = {}) const;

    /// @}
    /// @name Reading numbers
    /// The text may have white space around the number. '.', ',' and the user's separator are decimal separators;
    /// full-width digits, stops and minus signs count as the ASCII ones, and a byte order mark before the number counts
    /// as nothing. Each returns 0 when the whole text is not a number in range, and sets `*ok` to whether it is, unless
    /// `ok` is null.
    /// @{

    /// Digits in `base`, 2 to 36, letters in either case, after an optional '+' or, for the signed types, '-'.
    ///
    /// Two take other ranges than their types have. ToShort takes -65535 to 32767 and keeps the lower 16 bits: "-40000"
    /// is 25536. ToInt64 takes 0 to 4294967295 and returns the lower 32 bits with their sign: "3000000000" is
    /// -1294967296.
    short ToShort(bool* ok = nullptr, unsigned int base = 10) const;
    unsigned short ToUShort(bool* ok = nullptr, unsigned int base = 10) const;
    int ToInt(bool* ok = nullptr, unsigned int base = 10) const;
    unsigned int ToUInt(bool* ok = nullptr, unsigned int base = 10) const;
    long long ToInt64(bool* ok = nullptr, unsigned int base = 10) const;
    unsigned long long ToUInt64(bool* ok = nullptr, unsigned int base = 10) const;

    /// Whatever strtod reads, exponents, hexadecimal forms, "inf" and "nan" too; beyond the range, an infinity. A text
    /// that is all white space, or has bytes beyond ASCII that are not UTF-8, succeeds with 0.0; an empty one fails.
    double ToDouble(bool* ok = nullptr) const;
    float ToFloat(bool* ok = nullptr) const;

    /// @}

private:
    /// Takes over `text`, which is new.
    explicit String(std::string* text);

    /// A new text with these bytes.
    static String fromBytes(std::string bytes);

    /// Takes `bytes` as this String's own text; the other holders keep the old one.
    void install(std::string bytes);

    /// Gives this String a text of its own in which byte `index` exists, padded with NUL bytes.
    void detachAndExtend(unsigned int index);

    shared_ptr<std::string> text_;
};

/// A copy of `a` with `b` appended, as by +=.
[[nodiscard]] String operator+(const String& a, const String& b);
[[nodiscard]] String operator+(const String& a, const char* b);

/// The views compared byte by byte, as unsigned values; for UTF-8 that is the order of the code points. A null String,
/// an empty one and "" are equal. A null `const char*` differs from every String, even a null one: of the six
/// comparisons only != is true.
inline bool operator==(const String& a, const String& b) {
    return a.CStr() == b.CStr() || std::strcmp(a.CStr(), b.CStr()) == 0;
}
inline bool operator==(const String& a, const char* b) {
    return b != nullptr && (a.CStr() == b || std::strcmp(a.CStr(), b) == 0);
}
inline bool operator<(const String& a, const String& b) {
    return a.CStr() != b.CStr() && std::strcmp(a.CStr(), b.CStr()) < 0;
}
inline bool operator<(const String& a, const char* b) {
    return b != nullptr && a.CStr() != b && std::strcmp(a.CStr(), b) < 0;
}
inline bool operator<=(const String& a, const String& b) {
    return a.CStr() == b.CStr() || std::strcmp(a.CStr(), b.CStr()) <= 0;
}
inline bool operator<=(const String& a, const char* b) {
    return b != nullptr && (a.CStr() == b || std::strcmp(a.CStr(), b) <= 0);
}
inline bool operator!=(const String& a, const String& b) {
    return !(a == b);
}
inline bool operator!=(const String& a, const char* b) {
    return !(a == b);
}
inline bool operator>(const String& a, const String& b) {
    return b < a;
}
inline bool operator>(const String& a, const char* b) {
    return b != nullptr && !(a <= b);
}
inline bool operator>=(const String& a, const String& b) {
    return b <= a;
}
inline bool operator>=(const String& a, const char* b) {
    return b != nullptr && !(a < b);
}
inline bool operator==(const char* a, const String& b) {
    return b == a;
}
inline bool operator!=(const char* a, const String& b) {
    return b != a;
}
inline bool operator<(const char* a, const String& b) {
    return b > a;
}
inline bool operator<=(const char* a, const String& b) {
    return b >= a;
}
inline bool operator>(const char* a, const String& b) {
    return b < a;
}
inline bool operator>=(const char* a, const String& b) {
    return b <= a;
}

#pragma GCC visibility pop
