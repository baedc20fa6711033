// Any bytes as a property list: reading them takes bounded time and memory, and what is read is the same after it was
// written and read again.

#include "fuzz/PropertyListText.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const cv::plist::Parsed parsed = cv::plist::parse(std::string(data, data + size));
    const bool isGood = parsed.verdict == cv::plist::Parsed::Verdict::Good;
    fuzz::expectEqual("a value for what is good", parsed.root.has_value(), isGood);
    fuzz::expectEqual("a reason for what is not", parsed.reason.empty(), isGood);
    if (isGood) {
        fuzz::expectReadAs(cv::plist::toBinary(*parsed.root), fuzz::textOf(*parsed.root).text);
    }
    return 0;
}
