#pragma once

#include <optional>
#include <string>
#include <utility>

namespace cv {

/// Why something could not be done.
struct Fault {
    std::string what;    ///< the file, folder or other thing concerned; may be empty
    std::string reason;  ///< to end a sentence with

    /// Both, for a message: "WHAT: REASON".
    std::string text() const { return what.empty() ? reason : what + ": " + reason; }
};

/// What the port's own functions return: a value, or the fault in its place. Those that have no value to return give an
/// optional Fault, which is there when something went wrong.
template <typename T>
class [[nodiscard]] Result {
public:
    // Implicit, so that a function returns either of them.
    Result(T value) : value_(std::move(value)) {}
    Result(Fault fault) : fault_(std::move(fault)) {}

    /// Whether there is a value.
    explicit operator bool() const { return value_.has_value(); }

    /// The value, which must be there.
    T& operator*() { return *value_; }
    const T& operator*() const { return *value_; }

    /// The fault, when there is no value.
    const Fault& fault() const { return fault_; }

private:
    std::optional<T> value_;
    Fault fault_;
};

}  // namespace cv
