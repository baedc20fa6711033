#include "platform/Report.h"

#include <array>
#include <cstdio>

namespace cv {

namespace {

/// A line on its way to standard error, in pieces of the buffer's size.
class Line {
public:
    Line() { flockfile(stderr); }
    ~Line() {
        flush();
        funlockfile(stderr);
    }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    void add(std::string_view text) {
        for (const char c : text) {
            add(static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c);
        }
    }

    void end() { add('\n'); }

private:
    void add(char c) {
        if (size_ == buffer_.size()) {
            flush();
        }
        buffer_[size_++] = c;
    }

    void flush() {
        static_cast<void>(std::fwrite(buffer_.data(), 1, size_, stderr));
        size_ = 0;
    }

    std::array<char, 4096> buffer_;
    std::size_t size_ = 0;
};

}  // namespace

void report(std::string_view who, std::string_view text) noexcept {
    report(who, {text});
}

void report(std::string_view who, std::initializer_list<std::string_view> pieces) noexcept {
    Line line;
    line.add(who);
    line.add(": ");
    for (const std::string_view piece : pieces) {
        line.add(piece);
    }
    line.end();
}

}  // namespace cv
