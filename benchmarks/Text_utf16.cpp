// Text converted from UTF-8 to UTF-16 and back again.

#include <memory>
#include <string>

#include "CvBase/common/common_string.h"
#include "benchmarks/support/Main.h"

#if CV_PEER_QT
#include <QByteArray>
#include <QString>
#endif

namespace {

constexpr std::size_t CHARACTERS = 50000;

/// `sentence`, which has `characters` of them, over and over: CHARACTERS in all.
std::string repeated(const std::string& sentence, std::size_t characters) {
    std::string text;
    for (std::size_t i = 0; i < CHARACTERS / characters; ++i) {
        text += sentence;
    }
    return text;
}

/// `convert` makes a new text of `text`, by way of UTF-16.
template <typename T, typename Convert>
void addConversion(const std::string& work, const std::string& name, const T& text, Convert convert) {
    const auto result = std::make_shared<T>();
    bench::add(
        work,
        {name, [text, result, convert] { *result = convert(text); }, [text, result] { return *result == text; }, {}});
}

void addThereAndBack(const std::string& kind, const std::string& bytes) {
    const std::string work = "Text/utf16-there-and-back-" + kind;
    addConversion(work, "CvBase", String(bytes.c_str()),
                  [](const String& text) { return String(text.Unicode().get()); });
#if CV_PEER_QT
    addConversion(work, "QString", QByteArray(bytes.c_str()),
                  [](const QByteArray& text) { return QString::fromUtf8(text).toUtf8(); });
#endif
}

[[maybe_unused]] const bool added = [] {
    addThereAndBack("ASCII", repeated("Of the eleven files, two were moved to the Trash. ", 50));
    addThereAndBack("Latin", repeated("Où est passé l'élève naïf ? À la forêt, déjà là ! ", 50));
    addThereAndBack(
        "Japanese",
        repeated("吾輩は猫である。名前はまだ無い。どこで生れたか頓と見当がつかぬ。何でも薄暗いじめじめした所で。のだ。",
                 50));
    return true;
}();

}  // namespace
