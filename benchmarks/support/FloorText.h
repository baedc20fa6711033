#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <string_view>
#include <utility>

namespace bench {

/// The blocks of memory that the contract of String asks for, and nothing else: a std::string and a count, made anew.
/// A benchmark called "floor" gives its results in these. So it shows how fast the best known loop could be in String.
class FloorText {
public:
    explicit FloorText(std::string_view bytes) : FloorText(new std::string(bytes)) {}
    explicit FloorText(std::string&& text) : FloorText(new std::string(std::move(text))) {}

    /// Takes over `text`, which is new.
    explicit FloorText(std::string* text) : text_(text), count_(new unsigned int(1)) {
        // Or else the compiler may leave out a block that nobody looks into.
        benchmark::DoNotOptimize(text_);
        benchmark::DoNotOptimize(count_);
    }

    FloorText(FloorText&& other) noexcept
        : text_(std::exchange(other.text_, nullptr)), count_(std::exchange(other.count_, nullptr)) {}
    FloorText& operator=(FloorText&& other) noexcept {
        std::swap(text_, other.text_);
        std::swap(count_, other.count_);
        return *this;
    }

    ~FloorText() {
        delete text_;
        delete count_;
    }

    [[nodiscard]] const std::string& Text() const { return *text_; }

private:
    std::string* text_;
    unsigned int* count_;
};

}  // namespace bench
