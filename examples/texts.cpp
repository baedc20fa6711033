// Text and formatting: pieces, numbers, templates, and what null and empty are.
//
//     texts

#include <iostream>
#include <vector>

#include "CvBase/common/common_std.h"

namespace {

void showPieces() {
    const String line = String("  Kick ;-3.5;  left  channel ").SimplifyWhiteSpace();
    std::vector<String> fields;
    line.Split(';', fields);
    for (String& field : fields) {
        field = field.StripWhiteSpace();
    }
    std::cout << String::Join(" | ", fields) << '\n';
    std::cout << line.Left(4).ToUpper() << line.Mid(4, 1) << line.Right(7).Replace("ann", "ANN") << '\n';
    std::cout << "the first ';' is byte " << line.Find(';').Value() << '\n';
}

void showNumbers() {
    std::cout << String("%1 of %2 files, %3 %, 0x%4").Arg(7).Arg(20).Arg(35.0, 1).Arg(48879, 16, 8U) << '\n';
    for (const char* text : {"42", " -7 ", "4 2", "99999999999"}) {
        bool ok = false;
        const int number = String(text).ToInt(&ok);
        std::cout << '"' << text << "\" is " << (ok ? String::Number(number) : String("no int")) << '\n';
    }
}

void showStates() {
    const String null;
    const String empty("");
    std::cout << std::boolalpha << "null equals empty: " << (null == empty) << ", is null: " << null.IsNull() << " and "
              << empty.IsNull() << ", a copy shares: " << String(empty).SharesTextWith(empty) << '\n';
}

}  // namespace

int main() {
    showPieces();
    showNumbers();
    showStates();
}
