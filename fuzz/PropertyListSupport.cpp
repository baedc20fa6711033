#include "fuzz/PropertyListSupport.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "fuzz/Fuzz.h"

namespace fuzz {

namespace {

using namespace cv::plist;

bool isSame(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

bool isSame(bool a, bool b) {
    return a == b;
}

bool isSame(const Integer& a, const Integer& b) {
    return a.bits == b.bits && a.isNegative == b.isNegative;
}

bool isSame(const Real& a, const Real& b) {
    return isSame(a.value, b.value) && a.isSingle == b.isSingle;
}

bool isSame(const Date& a, const Date& b) {
    return isSame(a.seconds, b.seconds);
}

bool isSame(const Data& a, const Data& b) {
    return a.bytes == b.bytes;
}

bool isSame(const std::string& a, const std::string& b) {
    return a == b;
}

bool isSame(const Uid& a, const Uid& b) {
    return a.number == b.number;
}

bool isSame(const Array& a, const Array& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const Value& one, const Value& other) { return fuzz::isSame(one, other); });
}

bool isSame(const Dictionary& a, const Dictionary& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& one, const auto& other) {
        return one.first == other.first && fuzz::isSame(one.second, other.second);
    });
}

}  // namespace

bool isSame(const Value& a, const Value& b) {
    return a.content.index() == b.content.index() &&
           std::visit([&](const auto& one) { return isSame(one, std::get<std::decay_t<decltype(one)>>(b.content)); },
                      a.content);
}

void expectReadAs(const std::string& bytes, const Value& value) {
    const Parsed parsed = parse(bytes);
    expectEqual("what is wrong with a good property list", parsed.reason, "");
    expect("the value that is read", parsed.root && isSame(*parsed.root, value));
}

}  // namespace fuzz
