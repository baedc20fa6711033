// Sequences of operations on a few Strings, which share texts with one another, against TextModel.

#include <map>

#include "CvBase/common/common_string.h"
#include "fuzz/Fuzz.h"
#include "fuzz/TextModel.h"

namespace {

using fuzz::expectEqual;
using fuzz::TextModel;
using Position = checked_value<unsigned int>;

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
    Position maybe() { return flag() ? Position(number()) : Position(); }
    bool flag() { return input.ConsumeBool(); }
    char byte() { return input.ConsumeIntegral<char>(); }
};

/// Each String is as its model says, and shares its text with those that it should share it with.
void check(const std::vector<Slot>& slots) {
    std::map<unsigned int, unsigned int> holders;
    for (const Slot& slot : slots) {
        ++holders[slot.model.cell];
    }
    for (const auto& [real, model] : slots) {
        expectEqual("being null", real.IsNull(), model.isNull);
        expectEqual("a text", std::string(real.CStr(), real.Length()), model.bytes);
        expectEqual("the byte after the text", real.CStr()[real.Length()], '\0');
        expectEqual("the number of Strings that share a text", real.UseCount(), holders[model.cell]);
        expectEqual("sharing", real.SharesTextWith(slots[0].real), model.cell == slots[0].model.cell);
    }
}

void expectFound(const char* what, const Position& real, const Position& model) {
    expectEqual(what, real.IsSet(), model.IsSet());
    expectEqual(what, real.Value(), model.Value());
}

void make(Turn& turn) {
    const std::string text = turn.input.ConsumeRandomLengthString(200), view = text.c_str();
    const unsigned int most = turn.number();
    Slot& slot = turn.slot();
    const Slot made[] = {{String(), TextModel()},
                         {String(text.c_str()), TextModel(view)},
                         {String(text.c_str(), most), TextModel(view.substr(0, most))},
                         {String(text[0]), TextModel(std::string(1, text[0]))}};
    if (turn.flag()) {
        slot = turn.input.PickValueInArray(made);
    } else if (turn.flag()) {
        slot.real = text.c_str();
        slot.model = TextModel(view);
    } else {
        slot.real.Assign(text.c_str(), most);
        slot.model = TextModel(view.substr(0, most));
    }
}

void copy(Turn& turn) {
    Slot& from = turn.slot();
    if (turn.flag()) {
        turn.slot() = Slot(from);
        return;
    }
    Slot& to = turn.slot();
    to.real = std::move(from.real);
    std::swap(to.model, from.model);
}

void append(Turn& turn) {
    const Slot& rhs = turn.slot();
    const char c = turn.byte();
    Slot& slot = turn.slot();
    if (turn.flag()) {
        slot.model.append(TextModel(rhs.model));
        slot.real += rhs.real;
    } else {
        slot.real += c;
        slot.model.append(TextModel(std::string(1, c)));
    }
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
    const unsigned int length = turn.number();
    const bool keepUtf8Whole = turn.flag();
    Slot& slot = turn.slot();
    if (turn.flag()) {
        slot.real.Resize(length % LONGEST, keepUtf8Whole);
        slot.model.resize(length % LONGEST, keepUtf8Whole);
    } else {
        slot.real.Truncate(length);
        slot.model.truncate(length);
    }
}

void edit(Turn& turn) {
    const unsigned int pos = turn.number();
    const Position count = turn.maybe();
    const Slot& piece = turn.slot();
    Slot& slot = turn.slot();
    if (turn.flag()) {
        slot.model.insert(pos, TextModel(piece.model));
        slot.real.Insert(pos, piece.real);
    } else {
        slot.real.Remove(pos, count);
        slot.model.remove(pos, count);
    }
}

void find(Turn& turn) {
    const auto& [real, model] = turn.slot();
    const unsigned int start = turn.number();
    const Position last = turn.maybe();
    const bool caseSensitive = turn.flag();
    const std::string needle = turn.slot().model.view();
    const char c = turn.byte();
    expectFound("Find of a byte", real.Find(c, start, caseSensitive), model.find(c, start, caseSensitive));
    expectFound("Find", real.Find(needle.c_str(), start, caseSensitive), model.find(needle, start, caseSensitive));
    expectFound("FindRev", real.FindRev(c, last, caseSensitive), model.findRev(c, last, caseSensitive));
}

/// Few bytes that come again and again, and a part of them with a wrong one, are what takes a search its longest way.
void repeat(Turn& turn) {
    const std::string bytes = turn.input.ConsumeRandomLengthString(12), piece = bytes.c_str();
    std::string text;
    while (!piece.empty() && text.size() < LONGEST - piece.size()) {
        text += piece;
    }
    std::string needle = text.substr(turn.number() % (text.size() + 1), turn.number());
    for (std::string* changed : {&text, &needle}) {
        if (turn.flag() && !changed->empty()) {
            (*changed)[turn.number() % changed->size()] = 'x';
        }
    }
    Slot& slot = turn.slot();
    slot = {String(text.c_str()), TextModel(text)};
    const unsigned int start = turn.number();
    expectFound("Find in a repetition", slot.real.Find(needle.c_str(), start), slot.model.find(needle, start, true));
}

void compare(Turn& turn) {
    const auto& [a, modelA] = turn.slot();
    const auto& [b, modelB] = turn.slot();
    const bool caseSensitive = turn.flag();
    const int order = modelA.view().compare(modelB.view());
    expectEqual("==", a == b, order == 0);
    expectEqual("<", a < b.CStr(), order < 0);
    expectEqual("<=", a <= b, order <= 0);
    expectEqual(">", a > b.CStr(), order > 0);
    expectEqual("BeginsWith", a.BeginsWith(b, caseSensitive),
                modelA.matches(modelA.left(modelB.length()), modelB, caseSensitive));
    expectEqual("EndsWith", a.EndsWith(b, caseSensitive),
                modelA.matches(modelA.right(modelB.length()), modelB, caseSensitive));
}

/// Puts into a slot what one of the operations gives that leave the String as it is.
void change(Turn& turn) {
    const auto& [real, model] = turn.slot();
    const auto& [from, modelFrom] = turn.slot();
    const auto& [to, modelTo] = turn.slot();
    const unsigned int n = turn.number();
    const Position count = turn.maybe();
    const char a = turn.byte(), b = turn.byte();
    const Slot results[] = {{real.Left(n), model.left(n)},
                            {real.Right(n), model.right(n)},
                            {real.Mid(n, count), model.mid(n, count)},
                            {real.ToUpper(), model.toUpper()},
                            {real.ToLower(), model.toLower()},
                            {real.StripWhiteSpace(), model.stripWhiteSpace()},
                            {real.SimplifyWhiteSpace(), model.simplifyWhiteSpace()},
                            {real.Replace(from, to), model.replace(modelFrom, modelTo)},
                            {real.ReplaceChar(a, b), model.replaceChar(a, b)},
                            {real.Arg(from), model.arg(modelFrom)},
                            {real.Arg(n), model.arg(TextModel(std::to_string(n)))}};
    turn.slot() = turn.input.PickValueInArray(results);
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
    const auto& [separator, model] = turn.slot();
    std::vector<String> parts;
    TextModel joined;
    for (auto count = turn.input.ConsumeIntegralInRange(0, 5); count > 0; --count) {
        const Slot& part = turn.slot();
        joined.append(parts.empty() ? TextModel() : model).append(part.model);
        parts.push_back(part.real);
    }
    turn.slot() = {String::Join(separator, parts), joined};
}

const struct {
    const char* name;
    void (*perform)(Turn&);
} OPERATIONS[] = {
    {"make", make},     {"repeat", repeat}, {"copy", copy}, {"append", append},   {"add", add},
    {"resize", resize}, {"edit", edit},     {"find", find}, {"compare", compare}, {"change", change},
    {"change", change}, {"split", split},   {"join", join},
};

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
        slots.resize(SLOT_COUNT);
        for (Slot& slot : slots) {
            slot = slot.model.length() > LONGEST ? Slot() : slot;
        }
    }
    return 0;
}
