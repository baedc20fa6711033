// Sequences of operations on a few Strings, which share texts with one another, against TextModel.

#include <functional>
#include <map>

#include "CvBase/common/common_string.h"
#include "fuzz/Fuzz.h"
#include "fuzz/TextModel.h"

namespace {

using fuzz::expect;
using fuzz::expectEqual;
using fuzz::TextModel;

/// A String and what it should be.
struct Slot {
    String real;
    TextModel model;
};

constexpr std::size_t SLOT_COUNT = 4;
constexpr unsigned int LONGEST = 1000;

/// The Strings, and what the input chooses for the next operation.
struct Turn {
    fuzz::Input& input;
    std::vector<Slot>& slots;

    Slot& slot() { return slots[input.ConsumeIntegralInRange<std::size_t>(0, SLOT_COUNT - 1)]; }
    unsigned int number() { return fuzz::number(input); }
    checked_value<unsigned int> maybe() {
        return flag() ? checked_value<unsigned int>(number()) : checked_value<unsigned int>();
    }
    bool flag() { return input.ConsumeBool(); }
    char byte() { return input.ConsumeIntegral<char>(); }
    std::string text() { return input.ConsumeRandomLengthString(200); }
};

void expectSame(const char* what, const String& real, const TextModel& model) {
    expectEqual(what, real.IsNull(), model.isNull());
    expectEqual(what, std::string(real.CStr(), real.Length()), model.bytes());
    expectEqual("the byte after the text", real.CStr()[real.Length()], '\0');
}

/// Each String is as its model says, and shares its text with those that it should share it with.
void check(const std::vector<Slot>& slots) {
    std::map<unsigned int, unsigned int> holders;
    for (const Slot& slot : slots) {
        ++holders[slot.model.cell()];
    }
    for (const Slot& slot : slots) {
        expectSame("a text", slot.real, slot.model);
        expectEqual("the number of Strings that share a text", slot.real.UseCount(), holders[slot.model.cell()]);
        expectEqual("sharing with the first", slot.real.SharesTextWith(slots[0].real),
                    slot.model.cell() == slots[0].model.cell());
    }
}

void expectFound(const char* what, const checked_value<unsigned int>& real, const checked_value<unsigned int>& model) {
    expectEqual(what, real.IsSet(), model.IsSet());
    expectEqual(what, real.Value(), model.Value());
}

void make(Turn& turn) {
    const std::string text = turn.text();
    const unsigned int most = turn.number();
    const std::string view = text.c_str();
    switch (turn.input.ConsumeIntegralInRange(0, 5)) {
        case 0:
            turn.slot() = {String(), TextModel()};
            break;
        case 1:
            turn.slot() = {String(text.c_str()), TextModel(view)};
            break;
        case 2:
            turn.slot() = {String(text.c_str(), most), TextModel(view.substr(0, most))};
            break;
        case 3:
            turn.slot() = {String(text[0]), TextModel(std::string(1, text[0]))};
            break;
        case 4: {
            Slot& slot = turn.slot();
            slot.real = text.c_str();
            slot.model = TextModel(view);
            break;
        }
        default: {
            Slot& slot = turn.slot();
            slot.real.Assign(text.c_str(), most);
            slot.model = TextModel(view.substr(0, most));
        }
    }
}

void copy(Turn& turn) {
    const Slot& from = turn.slot();
    turn.slot() = Slot(from);
}

void assign(Turn& turn) {
    const Slot& from = turn.slot();
    Slot& to = turn.slot();
    to.real = from.real;
    to.model = from.model;
}

void exchange(Turn& turn) {
    Slot& from = turn.slot();
    Slot& to = turn.slot();
    to.real = std::move(from.real);
    std::swap(to.model, from.model);
}

void append(Turn& turn) {
    const Slot& rhs = turn.slot();
    Slot& slot = turn.slot();
    slot.model.append(TextModel(rhs.model));
    slot.real += rhs.real;
}

void appendByte(Turn& turn) {
    const char c = turn.byte();
    Slot& slot = turn.slot();
    slot.real += c;
    slot.model.append(TextModel(std::string(1, c)));
}

void add(Turn& turn) {
    const Slot& a = turn.slot();
    const Slot& b = turn.slot();
    const bool isPlain = turn.flag();
    TextModel sum = a.model;
    sum.append(isPlain ? TextModel(b.model.view()) : b.model);
    turn.slot() = {isPlain ? a.real + b.real.CStr() : a.real + b.real, sum};
}

void resize(Turn& turn) {
    const unsigned int length = turn.number() % LONGEST;
    const bool keepUtf8Whole = turn.flag();
    Slot& slot = turn.slot();
    slot.real.Resize(length, keepUtf8Whole);
    slot.model.resize(length, keepUtf8Whole);
}

void truncate(Turn& turn) {
    const unsigned int length = turn.number();
    Slot& slot = turn.slot();
    slot.real.Truncate(length);
    slot.model.truncate(length);
}

void insert(Turn& turn) {
    const unsigned int pos = turn.number();
    const Slot& piece = turn.slot();
    Slot& slot = turn.slot();
    slot.model.insert(pos, TextModel(piece.model));
    slot.real.Insert(pos, piece.real);
}

void remove(Turn& turn) {
    const unsigned int pos = turn.number();
    const auto count = turn.maybe();
    Slot& slot = turn.slot();
    slot.real.Remove(pos, count);
    slot.model.remove(pos, count);
}

void find(Turn& turn) {
    const Slot& slot = turn.slot();
    const unsigned int start = turn.number();
    const bool caseSensitive = turn.flag();
    const std::string needle = turn.flag() ? turn.slot().model.view() : std::string(turn.text().c_str());
    const char c = turn.byte();
    expectFound("Find of a byte", slot.real.Find(c, start, caseSensitive), slot.model.find(c, start, caseSensitive));
    expectFound("Find", slot.real.Find(needle.c_str(), start, caseSensitive),
                slot.model.find(needle, start, caseSensitive));
}

void findRev(Turn& turn) {
    const Slot& slot = turn.slot();
    const auto start = turn.maybe();
    const char c = turn.byte();
    const bool caseSensitive = turn.flag();
    expectFound("FindRev", slot.real.FindRev(c, start, caseSensitive), slot.model.findRev(c, start, caseSensitive));
}

void compare(Turn& turn) {
    const Slot& a = turn.slot();
    const Slot& b = turn.slot();
    const bool caseSensitive = turn.flag();
    const int order = a.model.compare(b.model);
    expectEqual("==", a.real == b.real, order == 0);
    expectEqual("<", a.real < b.real.CStr(), order < 0);
    expectEqual("<=", a.real <= b.real, order <= 0);
    expectEqual(">", a.real > b.real.CStr(), order > 0);
    expectEqual("BeginsWith", a.real.BeginsWith(b.real, caseSensitive), a.model.beginsWith(b.model, caseSensitive));
    expectEqual("EndsWith", a.real.EndsWith(b.real, caseSensitive), a.model.endsWith(b.model, caseSensitive));
}

void cut(Turn& turn) {
    const Slot& slot = turn.slot();
    const unsigned int n = turn.number();
    const auto count = turn.maybe();
    switch (turn.input.ConsumeIntegralInRange(0, 2)) {
        case 0:
            turn.slot() = {slot.real.Left(n), slot.model.left(n)};
            break;
        case 1:
            turn.slot() = {slot.real.Right(n), slot.model.right(n)};
            break;
        default:
            turn.slot() = {slot.real.Mid(n, count), slot.model.mid(n, count)};
    }
}

void change(Turn& turn) {
    const Slot& slot = turn.slot();
    switch (turn.input.ConsumeIntegralInRange(0, 3)) {
        case 0:
            turn.slot() = {slot.real.ToUpper(), slot.model.toUpper()};
            break;
        case 1:
            turn.slot() = {slot.real.ToLower(), slot.model.toLower()};
            break;
        case 2:
            turn.slot() = {slot.real.StripWhiteSpace(), slot.model.stripWhiteSpace()};
            break;
        default:
            turn.slot() = {slot.real.SimplifyWhiteSpace(), slot.model.simplifyWhiteSpace()};
    }
}

void split(Turn& turn) {
    const Slot slot = turn.slot();
    const char separator = turn.byte();
    std::vector<String> fields(1, slot.real);
    const bool isInside = turn.flag();
    (isInside ? fields[0] : slot.real).Split(separator, fields);
    const std::vector<TextModel> expected = slot.model.split(separator);
    expectEqual("the number of fields", fields.size(), expected.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        turn.slots.push_back({fields[i], expected[i]});
    }
}

void join(Turn& turn) {
    const Slot& separator = turn.slot();
    std::vector<String> parts;
    std::vector<TextModel> models;
    for (auto count = turn.input.ConsumeIntegralInRange(0, 5); count > 0; --count) {
        const Slot& part = turn.slot();
        parts.push_back(part.real);
        models.push_back(part.model);
    }
    turn.slot() = {String::Join(separator.real, parts), TextModel::join(separator.model, models)};
}

void replace(Turn& turn) {
    const Slot& slot = turn.slot();
    const Slot& from = turn.slot();
    const Slot& to = turn.slot();
    turn.slot() = {slot.real.Replace(from.real, to.real), slot.model.replace(from.model, to.model)};
}

void replaceChar(Turn& turn) {
    const Slot& slot = turn.slot();
    const char from = turn.byte();
    const char to = turn.byte();
    turn.slot() = {slot.real.ReplaceChar(from, to), slot.model.replaceChar(from, to)};
}

void fillIn(Turn& turn) {
    const Slot& slot = turn.slot();
    const Slot& value = turn.slot();
    if (turn.flag()) {
        turn.slot() = {slot.real.Arg(value.real), slot.model.arg(value.model)};
    } else {
        const int number = turn.input.ConsumeIntegral<int>();
        turn.slot() = {slot.real.Arg(number), slot.model.arg(TextModel(std::to_string(number)))};
    }
}

const struct {
    const char* name;
    void (*perform)(Turn&);
} OPERATIONS[] = {
    {"make", make},         {"copy", copy},
    {"assign", assign},     {"exchange", exchange},
    {"append", append},     {"append byte", appendByte},
    {"add", add},           {"resize", resize},
    {"truncate", truncate}, {"insert", insert},
    {"remove", remove},     {"find", find},
    {"find back", findRev}, {"compare", compare},
    {"cut", cut},           {"change", change},
    {"split", split},       {"join", join},
    {"replace", replace},   {"replace byte", replaceChar},
    {"fill in", fillIn},
};

/// Keeps what later operations work on small.
void tidy(std::vector<Slot>& slots) {
    slots.resize(SLOT_COUNT);
    for (Slot& slot : slots) {
        if (slot.model.length() > LONGEST) {
            slot = {};
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    fuzz::Input input(data, size);
    std::vector<Slot> slots(SLOT_COUNT);
    Turn turn{input, slots};
    fuzz::trace().clear();
    while (input.remaining_bytes() > 0) {
        const auto& operation = input.PickValueInArray(OPERATIONS);
        fuzz::trace() += std::string(" ") + operation.name + ",";
        operation.perform(turn);
        check(slots);
        tidy(slots);
    }
    return 0;
}
