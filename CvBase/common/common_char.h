#pragma once

#pragma GCC visibility push(default)

/// The general category of each Latin-1 code point as Unicode 3.2 has it, numbered as in Category and indexed by the
/// byte's unsigned value. Later versions of Unicode moved 0xA7, 0xAA, 0xAD, 0xB6 and 0xBA to other categories.
extern const unsigned char _CHAR_CATEGORIES[256];

/// One byte of a String: an 8-bit code unit, which for ASCII and Latin-1 text is the character itself. Converts from
/// and to char freely.
class Char {
public:
    /// The general categories of Unicode that occur in Latin-1, and the two other separators, with what they hold
    /// there. The numbers left out belong to the other categories.
    enum Category : unsigned char {
        DecimalDigit = 4,           ///< Nd: 0 to 9
        OtherNumber = 6,            ///< No: superscript digits and fractions
        SpaceSeparator = 7,         ///< Zs: the space and the no-break space
        LineSeparator = 8,          ///< Zl: none
        ParagraphSeparator = 9,     ///< Zp: none
        Control = 10,               ///< Cc: 0x00 to 0x1F and 0x7F to 0x9F, tab and line feed among them
        UpperCaseLetter = 15,       ///< Lu
        LowerCaseLetter = 16,       ///< Ll: also the ordinal indicators 0xAA and 0xBA
        ConnectorPunctuation = 20,  ///< Pc: the underscore
        DashPunctuation = 21,       ///< Pd: the hyphen and the soft hyphen
        OpenPunctuation = 22,       ///< Ps: ( [ {
        ClosePunctuation = 23,      ///< Pe: ) ] }
        InitialQuote = 24,          ///< Pi: the left guillemet
        FinalQuote = 25,            ///< Pf: the right guillemet
        OtherPunctuation = 26,      ///< Po: such as ! " # % & * , . /
        MathSymbol = 27,            ///< Sm: such as + < = > | ~
        CurrencySymbol = 28,        ///< Sc: such as $
        ModifierSymbol = 29,        ///< Sk: accents that stand alone, ^ and the grave accent among them
        OtherSymbol = 30            ///< So: such as the copyright sign
    };

    /// The byte `c`. Not explicit, so that a char can be passed for a Char.
    constexpr Char(char c = '\0') : c_(c) {}

    /// The byte.
    constexpr operator char() const { return c_; }

    /// The byte's entry in _CHAR_CATEGORIES: a Category, or the number of another category of Unicode.
    [[nodiscard]] unsigned char GetCategory() const { return _CHAR_CATEGORIES[static_cast<unsigned char>(c_)]; }

    /// Whether the byte is 0x20, 0x09 to 0x0D, or a separator by its category. Bytes are looked at one by one: 0xA0 is
    /// white space even as the second byte of a UTF-8 sequence.
    [[nodiscard]] bool IsWhiteSpace() const {
        const unsigned char category = GetCategory();
        return (c_ >= '\t' && c_ <= '\r') || (category >= SpaceSeparator && category <= ParagraphSeparator);
    }

    /// Whether the byte is one of '0' to '9'.
    [[nodiscard]] bool IsDigit() const { return GetCategory() == DecimalDigit; }

    /// The small letter of an ASCII capital; any other byte is itself.
    [[nodiscard]] constexpr char ToLower() const { return c_ >= 'A' && c_ <= 'Z' ? static_cast<char>(c_ + 32) : c_; }

    /// The capital of a small ASCII letter; any other byte is itself.
    [[nodiscard]] constexpr char ToUpper() const { return c_ >= 'a' && c_ <= 'z' ? static_cast<char>(c_ - 32) : c_; }

private:
    char c_;
};

#pragma GCC visibility pop
