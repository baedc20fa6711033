// Calls something of each part of the library, and prints the sizes of its types, which no language standard may
// change.

#include CONSUMER_HEADERS

#include <cstdio>
#include <vector>

namespace {

bool throwsFileIO() {
    try {
        Util::File(FilePath("/no/such/file", false)).Open(Util::File::Read);
    } catch (const Util::Exception::FileIO& failure) {
        return failure.GetErrorType() == Util::Exception::FileIO::OpenError;
    }
    return false;
}

bool readsWhatItWrote() {
    Util::ByteStream stream(0);
    stream.SetEndianType(Util::DataStream::BigEndian);
    stream << 7 << String("text");
    stream.SetPosition(0);
    int number = 0;
    String text;
    stream >> number >> text;
    return number == 7 && "text" == text && text != "other";
}

bool converts() {
    const std::vector<short> samples = {-32768, 0, 16384};
    std::vector<float> floats(samples.size());
    IPP::Convert(static_cast<unsigned int>(samples.size()), samples.data(), floats.data(), 15);
    return floats == std::vector<float>{-1.0F, 0.0F, 0.5F};
}

bool comparesPaths() {
    const FolderPath folder("/somewhere", false);
    const FilePath file = folder + "File.TXT";
    return file == FilePath("/somewhere/file.txt", false) && file.GetFolder() == folder;
}

template <typename T>
void printSize(const char* name) {
    std::printf("%s %zu %zu\n", name, sizeof(T), alignof(T));
}

}  // namespace

int main() {
    printSize<String>("String");
    printSize<Char>("Char");
    printSize<FilePath>("FilePath");
    printSize<FolderPath>("FolderPath");
    printSize<checked_value<unsigned int>>("checked_value");
    printSize<shared_array<int>>("shared_array");
    printSize<Exception::Base>("Exception::Base");
    printSize<Util::Exception::FileIO>("FileIO");
    printSize<Util::Exception::DataStreamIO>("DataStreamIO");
    printSize<Util::File>("File");
    printSize<Util::Dir>("Dir");
    printSize<Util::FileTime>("FileTime");
    printSize<Util::ByteStream>("ByteStream");
    printSize<Util::CFString>("CFString");
    printSize<UI::Native::IconType>("IconType");

    const String text = String("%1 of %2").Arg(3).Arg("4");
    const bool passed = text == "3 of 4" && throwsFileIO() && readsWhatItWrote() && converts() && comparesPaths() &&
                        Util::GetCurrentProcessID() > 0;
    if (!passed) {
        UI::Native::MessageOK(nullptr, "", "The consumer failed", false, UI::Native::IconError);
    }
    std::puts(passed ? "passed" : "failed");
    return passed ? 0 : 1;
}
