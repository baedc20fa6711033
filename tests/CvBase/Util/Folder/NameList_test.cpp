#include "CvBase/Util/Folder/NameList.h"

#include "tests/support/Test.h"

namespace {

TEST(NameList, SortsWhatWasHeldWithWhatWasAddedByteByByte) {
    // Eight bytes are compared at a time, from where the names begin to differ.
    // clang-format off
    const std::vector<std::string> rows[] = {
        {},
        {"b", "a", "b"},
        {"", "a", "A", "\xC3\xA9", "_", "\x01"},
        {"12345678b", "12345678a", "12345678", "1234567", "12345679"},
        {"same 12345678 b", "same 12345678 a", "same 12345678", "same 1234567", "same "},
        {"same", "same", "same"},
    };
    // clang-format on
    for (std::vector<std::string> row : rows) {
        std::vector<String> names;
        Util::NameList added;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i % 2 == 0) {
                added.add(row[i].data(), row[i].size());
            } else {
                names.emplace_back(row[i].c_str());
            }
        }
        added.sortInto(names);
        std::sort(row.begin(), row.end());
        ASSERT_TRUE(std::equal(names.begin(), names.end(), row.begin(), row.end(),
                               [](const String& a, const std::string& b) { return a == b.c_str(); }))
            << testing::PrintToString(row);
    }
}

}  // namespace
