#pragma once

#include <string>
#include <utility>
#include <vector>

#include "CvBase/common/common_checked_types.h"

namespace fuzz {

/// What a String should be, made in the plainest way: whether it is null, its bytes, and the number of the cell in
/// which the Strings that share its text are counted. Each operation is String's own of the same name.
class TextModel {
public:
    using Position = checked_value<unsigned int>;

    TextModel() = default;
    explicit TextModel(std::string bytes) : isNull_(false), bytes_(std::move(bytes)) {}

    [[nodiscard]] bool isNull() const { return isNull_; }
    [[nodiscard]] bool isEmpty() const { return bytes().empty(); }
    [[nodiscard]] const std::string& bytes() const { return bytes_; }
    [[nodiscard]] unsigned int length() const { return static_cast<unsigned int>(bytes().size()); }
    [[nodiscard]] std::string view() const { return bytes().c_str(); }
    [[nodiscard]] unsigned int cell() const { return cell_; }

    /// Negative, 0 or positive, as the views compare.
    [[nodiscard]] int compare(const TextModel& other) const { return view().compare(other.view()); }

    void append(const TextModel& rhs);
    void resize(unsigned int length, bool keepUtf8Whole);
    void truncate(unsigned int length);
    void insert(unsigned int pos, const TextModel& s);
    void remove(unsigned int pos, const Position& count);

    [[nodiscard]] Position find(char c, unsigned int start, bool caseSensitive) const;
    [[nodiscard]] Position findRev(char c, const Position& start, bool caseSensitive) const;
    [[nodiscard]] Position find(const std::string& needle, unsigned int start, bool caseSensitive) const;
    [[nodiscard]] bool beginsWith(const TextModel& prefix, bool caseSensitive) const;
    [[nodiscard]] bool endsWith(const TextModel& suffix, bool caseSensitive) const;

    [[nodiscard]] TextModel left(unsigned int n) const;
    [[nodiscard]] TextModel right(unsigned int n) const;
    [[nodiscard]] TextModel mid(unsigned int pos, const Position& count) const;

    [[nodiscard]] TextModel toUpper() const;
    [[nodiscard]] TextModel toLower() const;
    [[nodiscard]] TextModel stripWhiteSpace() const;
    [[nodiscard]] TextModel simplifyWhiteSpace() const;
    [[nodiscard]] std::vector<TextModel> split(char separator) const;
    [[nodiscard]] static TextModel join(const TextModel& separator, const std::vector<TextModel>& parts);
    [[nodiscard]] TextModel replace(const TextModel& from, const TextModel& to) const;
    [[nodiscard]] TextModel replaceChar(char from, char to) const;
    [[nodiscard]] TextModel arg(const TextModel& value) const;

private:
    static unsigned int newCell();

    bool isNull_ = true;
    std::string bytes_;
    unsigned int cell_ = newCell();
};

}  // namespace fuzz
