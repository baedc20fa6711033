// Lists a folder through a filter, and searches a tree for a file.
//
//     find_files FOLDER FILTER NAME        for example find_files ~/Music "*.wav" song.wav

#include <iostream>
#include <vector>

#include "CvBase/Util/Dir.h"
#include "CvBase/common/common_std.h"

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: find_files FOLDER FILTER NAME\n";
        return 2;
    }
    const FolderPath folder(argv[1], false);
    Util::Dir dir(folder);
    if (!dir.Exists()) {
        std::cerr << folder << " is not a folder\n";
        return 1;
    }
    std::vector<String> names;
    dir.GetFoldernames(names, "*", false);
    for (const String& name : names) {
        std::vector<String> inside;
        Util::Dir(folder / name).GetFilenames(inside, argv[2], false, false);
        std::cout << name << "/: " << inside.size() << " of " << argv[2] << '\n';
    }
    dir.GetFilenames(names, argv[2], false, false);
    for (const String& name : names) {
        std::cout << name << '\n';
    }
    unsigned int visited = 0;
    const FilePath found = Util::Dir::FindFile(argv[3], folder.ToString(), true, visited);
    std::cout << argv[3] << (found.IsEmpty() ? " is nowhere" : " is in ") << found.GetFolder().GetFolderName() << '\n';
    return found.IsEmpty() ? 1 : 0;
}
