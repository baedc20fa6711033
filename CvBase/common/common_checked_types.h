#pragma once

/// An optional value: set to a T, or unset. As an argument, an unset one asks for the function's natural default; as a
/// result, it means "none" or "unknown".
///
///     const checked_value<unsigned int> dot = name.FindRev('.');
///     const String extension = dot.IsSet() ? name.Mid(dot.Value() + 1) : String();
///
/// T must have a default constructor and be copyable. An unset checked_value holds a default T. Nothing here throws
/// unless T does.
template <typename T>
class checked_value {
public:
    /// Unset.
    constexpr checked_value() : value_(), set_(false) {}

    /// Set to `value`. Not explicit, so that a caller passes a plain value.
    constexpr checked_value(const T& value) : value_(value), set_(true) {}

    /// Whether there is a value.
    [[nodiscard]] constexpr bool IsSet() const { return set_; }

    /// The value; T's default (0 for a number) when unset. The reference is valid until this object is destroyed.
    [[nodiscard]] constexpr const T& Value() const { return value_; }

    /// The value, or `fallback` when unset.
    [[nodiscard]] constexpr T ValueOr(const T& fallback) const { return set_ ? value_ : fallback; }

    /// Two unset values are equal; an unset one differs from every set one.
    friend constexpr bool operator==(const checked_value& a, const checked_value& b) {
        return a.set_ == b.set_ && (!a.set_ || a.value_ == b.value_);
    }
    friend constexpr bool operator!=(const checked_value& a, const checked_value& b) { return !(a == b); }

private:
    T value_;
    bool set_;
};
