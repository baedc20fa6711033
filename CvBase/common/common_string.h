#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "CvBase/common/common_char.h"
#include "CvBase/common/common_checked_types.h"
#include "CvBase/common/common_smart_ptr.h"

/// Text: bytes that are UTF-8 by convention, shared by all copies of a String. Positions and lengths are counts of
/// bytes.
///
/// A copy costs one atomic increment and no byte is copied. A String never changes bytes that another String can see:
/// each operation that changes it builds a new text first and then takes it, so that on std::bad_alloc the String is as
/// it was. Text throws nothing else, but std::length_error where a 32-bit processor cannot address as much (2 GiB).
/// Copies may be used on different threads, one String may not.
///
/// A String is null (there is no text) or holds a text, which may be empty. Both states have length 0, read as "" and
/// are equal; each operation says which of them it gives.
///
/// NUL bytes count in the length, and Left, Mid and Right work with them. What reads the text as a C string sees only
/// the bytes before the first NUL, called the view below.
class String {
public:
    /// For Number and Arg of a floating value: as many decimals as printf gives by itself.
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

    /// The one byte, NUL too. An int converts to char silently: String(65) is "A".
    String(char c);
    String(const Char& c);

    /// NUL-terminated UTF-16, converted to UTF-8, or to Mac OS Roman when `encoding` is 2. Null when `utf16` is null,
    /// has 100000 units or more, has an unpaired surrogate, or has a character that the encoding lacks.
    String(const unsigned short* utf16, unsigned int encoding = 1);

    /// NUL-terminated UTF-32, converted to UTF-8; `s` must not be null. Null when there are 100000 units or more, one
    /// of them is no character, or the text needs more than three bytes a unit: characters beyond U+FFFF need four, and
    /// fit where ASCII characters make up for them.
    String(const wchar_t* s);

    /// Shares the text.
    String(const String& other) noexcept = default;
    String& operator=(const String& other) noexcept = default;

    /// Exchanges the texts, which spares the counting when elements of a vector are moved about. There is no move
    /// construction: it would leave a String without a count.
    String& operator=(String&& other) noexcept {
        text_.swap(other.text_);
        return *this;
    }

    ~String() = default;

    /// As `*this = String(s)`: a null `s` makes this null.
    String& operator=(const char* s);

    /// As `*this = String(s, maxLength)`, without the memory and the time that another String takes.
    String& Assign(const char* s, unsigned int maxLength);

    /// @}
    /// @name The text
    /// @{

    /// The number of bytes, embedded NULs included; 0 when null.
    unsigned int Length() const { return IsNull() ? 0 : static_cast<unsigned int>(text_->size()); }

    /// The bytes with a NUL behind them; "" when null. Good while a String with this text exists and is not changed.
    const char* CStr() const { return IsNull() ? "" : text_->c_str(); }

    /// Whether the length is 0.
    bool IsEmpty() const { return Length() == 0; }

    /// Whether there is no text at all.
    bool IsNull() const { return text_.get() == nullptr; }

    /// How many Strings hold this text, this one included; at least 1.
    unsigned int UseCount() const { return text_.use_count(); }

    /// Whether the two hold one text between them, as copies do, and not merely equal ones.
    bool SharesTextWith(const String& other) const { return text_.count() == other.text_.count(); }

    /// The view as NUL-terminated UTF-16, read as UTF-8, or as Mac OS Roman when `encoding` is 2. A null array when the
    /// bytes are not valid in the encoding or give more than 100000 units; one unit, 0, for an empty view. The array
    /// stays on the calling thread.
    shared_array<unsigned short> Unicode(unsigned int encoding = 1) const;

    /// "\n".
    static String GetPlatformLinefeed();

    /// @}
    /// @name Appending and size
    /// @{

    /// Appends all bytes of `rhs`. When this is null or empty it shares the text of `rhs`; when `rhs` is, nothing
    /// happens.
    String& operator+=(const String& rhs);
    String& operator+=(char c);

    /// Cuts the text to `length` bytes or pads it with NUL bytes; a null String becomes non-null. With `keepUtf8Whole`,
    /// the bytes of a UTF-8 sequence that the end cuts off become NUL: they leave the view, and the length stays.
    void Resize(unsigned int length, bool keepUtf8Whole = false);

    /// Resize(length, true) when the text is longer, else nothing.
    void Truncate(unsigned int length);

    /// @}
    /// @name Searching
    /// Positions at or behind the end find nothing. Without `caseSensitive`, ASCII letters match in either case.
    /// @{

    /// The first position from `start` on that holds `c`.
    checked_value<unsigned int> Find(char c, unsigned int start = 0, bool caseSensitive = true) const;

    /// The last position not behind `start` that holds `c`; without a value, `start` is the last byte.
    checked_value<unsigned int> FindRev(char c, const checked_value<unsigned int>& start = {},
                                        bool caseSensitive = true) const;

    /// Where `needle` first begins at or after `start`, before the next NUL byte; an empty one is found at `start`.
    /// Without `caseSensitive`, only the view is searched and a null `needle` is an empty one; with it, `needle` must
    /// not be null.
    checked_value<unsigned int> Find(const char* needle, unsigned int start = 0, bool caseSensitive = true) const;

    /// Whether the first, or the last, bytes are those of the argument, compared as ==. True for an empty one.
    bool BeginsWith(const String& prefix, bool caseSensitive = true) const;
    bool EndsWith(const String& suffix, bool caseSensitive = true) const;

    /// @}
    /// @name Pieces
    /// @{

    /// The first, or the last, `n` bytes, or all there are; null when this is null.
    String Left(unsigned int n) const;
    String Right(unsigned int n) const;

    /// The bytes from `pos`, `count` of them or as many as there are; without a value, all. Null when `pos` is at or
    /// behind the end.
    String Mid(unsigned int pos, const checked_value<unsigned int>& count = {}) const;

    /// @}
    /// @name Editing
    /// @{

    /// Puts `s` in front of byte `pos`, or at the end when `pos` is behind it.
    String& Insert(unsigned int pos, const String& s);

    /// Takes out `count` bytes at `pos`, or, without a value, all from there on. Nothing happens when `pos` is at or
    /// behind the end or `count` is 0. `pos + count` wraps at 32 bits: "abcde".Remove(2, 0xFFFFFFFF) gives "abbcde".
    String& Remove(unsigned int pos, const checked_value<unsigned int>& count = {});

    /// The view with its ASCII letters in the other case; null when the text begins with a NUL byte. A null or an empty
    /// String is shared by ToUpper and made anew by ToLower.
    String ToUpper() const;
    String ToLower() const;

    /// Without the white space at both ends; shares the text when there is none. Empty when there is nothing else.
    String StripWhiteSpace() const;

    /// Without the white space at both ends, and with one blank for each run of white space inside. A UTF-8 sequence
    /// whose end was taken for white space (the byte 0xA0) and dropped is blanked as by Resize. Empty when there is
    /// nothing else; a null String stays null.
    String SimplifyWhiteSpace() const;

    /// Replaces `out` by the fields between the separators, always one more than there are separators. Empty fields are
    /// kept; the one behind a trailing separator is null. `out` may hold this String.
    void Split(char separator, std::vector<String>& out) const;

    /// The parts with `separator` between them. Null when there is nothing to join; shares the text of the one piece
    /// when all others are empty.
    static String Join(const String& separator, const std::vector<String>& parts);

    /// Every `from` replaced by `to`, from left to right; null when nothing is left. Shares the text when `from` is
    /// null or empty. Behind the first NUL byte of `from`, anything matches that a C string's comparison does not see.
    String Replace(const String& from, const String& to) const;

    /// Every byte `from` replaced by `to`; never null. What is behind the first NUL byte is dropped, but a `from` there
    /// brings its position back, with NUL bytes between.
    String ReplaceChar(const Char& from, const Char& to) const;

    /// @}
    /// @name Numbers as text
    /// `long` is a 32-bit number here, as on the 32-bit Mac: only the lower 32 bits of it are looked at. Pass 64-bit
    /// values as (unsigned) long long.
    /// @{

    /// `value` in `base`, 2 to 36 with upper-case letters, 10 for any other; a sign, then at least `width` digits with
    /// zeros in front. The least value, -2147483648, pads its last digit on its own: with a width of 3 in base 10 it is
    /// "-214748364008".
    static String Number(int value, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(long value, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(unsigned int value, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(unsigned long value, unsigned int base = 10, const checked_value<unsigned int>& width = {});

    /// `value` as upper-case hexadecimal when `base` is 16, as decimal for any other; at least `width` digits with
    /// zeros in front. A negative value is its two's complement in hexadecimal, with a "-" before it when there is a
    /// width.
    static String Number(long long value, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(unsigned long long value, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});

    /// `value` as printf gives it with `precision`, at most 99, and the conversion letter `format`, one of f F e E g G
    /// ('f' without a value and for any other), with the user's decimal separator.
    static String Number(double value, unsigned int precision = NO_PRECISION,
                         const checked_value<unsigned int>& format = {});
    static String Number(float value, unsigned int precision = NO_PRECISION,
                         const checked_value<unsigned int>& format = {});

    /// @}
    /// @name Filling a template
    /// @{

    /// The template with the lowest-numbered placeholder, %0 to %9, replaced by `value`: the first one of that number,
    /// no other. Without a placeholder, `value` is appended. "%%" is no escape, and "%10" is "%1" and a '0'. A
    /// placeholder in `value` is one for the next call.
    String Arg(const String& value) const;
    String Arg(const char* s) const;
    String Arg(char c) const;
    String Arg(const Char& c) const;

    /// Arg with the number as Number renders it; short and unsigned short as int.
    String Arg(int v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(short v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(unsigned short v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(unsigned int v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(unsigned long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(long long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(unsigned long long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(double v, unsigned int precision = NO_PRECISION, const checked_value<unsigned int>& format = {}) const;
    String Arg(float v, unsigned int precision = NO_PRECISION, const checked_value<unsigned int>& format = {}) const;

    /// @}
    /// @name Reading numbers
    /// The text may have white space around the number; '.', ',' and the user's separator are decimal separators, and
    /// full-width digits, stops and minus signs are taken for the ASCII ones. Each sets `*ok`, unless `ok` is null, to
    /// whether the whole text was a number in range, and returns 0 when it was not.
    /// @{

    /// Digits in `base`, 2 to 36, letters in either case, after an optional '+' or, for the signed types, '-'. ToShort
    /// takes -65535 to 32767 and keeps the lower 16 bits: "-40000" is 25536. ToInt64 takes 0 to 4294967295 and returns
    /// the lower 32 bits sign-extended: "3000000000" is -1294967296.
    short ToShort(bool* ok = nullptr, unsigned int base = 10) const;
    unsigned short ToUShort(bool* ok = nullptr, unsigned int base = 10) const;
    int ToInt(bool* ok = nullptr, unsigned int base = 10) const;
    unsigned int ToUInt(bool* ok = nullptr, unsigned int base = 10) const;
    long long ToInt64(bool* ok = nullptr, unsigned int base = 10) const;
    unsigned long long ToUInt64(bool* ok = nullptr, unsigned int base = 10) const;

    /// Whatever strtod reads, exponents, hexadecimal forms, "inf" and "nan" too; beyond the range, an infinity. A text
    /// of white space only, or one with bytes beyond ASCII that are not UTF-8, is a 0.0 that succeeds; an empty one
    /// fails.
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
String operator+(const String& a, const String& b);
String operator+(const String& a, const char* b);

/// The views compared byte by byte, as unsigned values; for UTF-8 that is the order of the code points. A null String,
/// an empty one and "" are equal. A null pointer is neither equal to, less nor greater than anything, a null String
/// included.
/// @{
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
/// @}
