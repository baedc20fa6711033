#include "installer-host/journal/RootRecord.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <iterator>
#include <new>
#include <vector>

#include "installer-host/ExitStatus.h"
#include "installer-host/JsonInput.h"
#include "installer-host/look/JsonPath.h"
#include "installer-host/look/Places.h"
#include "installer-host/look/PrivateFolders.h"
#include "installer-host/look/QuietOpen.h"
#include "platform/Descriptor.h"
#include "platform/Result.h"

namespace host {

namespace {

constexpr const char* PRIVATE_NAME = ".installer-host-journal";
constexpr const char* MACHINE_FOLDER = "/var/lib/installer-host";
constexpr const char* MACHINE_NAME = "journal";
constexpr mode_t FILE_MODE = 0644;
constexpr mode_t FOLDER_MODE = 0755;
constexpr std::size_t MOST_BYTES = 65536;

std::string folderPathOf(const RootFolder& root, const std::string& rootPath) {
    return root.isMachine() ? MACHINE_FOLDER : rootPath;
}

[[noreturn]] void failRecord(const std::string& path, const std::string& reason, const std::string& advice = "") {
    throw Failure(ExitStatus::RootNotMade, "the record of journals '" + path + "' " + reason, advice);
}

cv::Descriptor openRecordFolder(const RootFolder& root, const std::string& path) {
    cv::Descriptor folder(root.isMachine() ? open(MACHINE_FOLDER, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)
                                           : openat(root.descriptor(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        failRecord(path, "cannot be reached: " + cv::errorText(errno),
                   root.isMachine() ? "A journal of the machine takes the rights of root." : "");
    }
    return folder;
}

/// The folders in which no journal may lie.
std::vector<std::string> refusedFolders(const std::string& rootPath, const Journal& journal) {
    std::vector<std::string> folders{journal.bundle};
    if (rootPath.empty()) {
        folders.emplace_back(MACHINE_FOLDER);
        folders.insert(folders.end(), journal.scope.begin(), journal.scope.end());
        return folders;
    }
    folders.push_back(rootPath);
    for (const char* name : PRIVATE_FOLDERS) {
        folders.push_back(pathInRoot(rootPath, name));
    }
    folders.insert(folders.end(), std::begin(SYSTEM_FOLDERS), std::end(SYSTEM_FOLDERS));
    return folders;
}

}  // namespace

void RootRecord::requireOutside(const std::string& path, const std::string& rootPath, const Journal& journal) {
    for (const std::string& folder : refusedFolders(rootPath, journal)) {
        if (liesIn(std::filesystem::path(path).parent_path(), folder)) {
            throw Failure(ExitStatus::Usage, "the journal '" + path + "' lies in '" + folder + "'",
                          "The bundle's code could read or change it there. Choose another folder for it.");
        }
    }
}

void RootRecord::makeFolder(const RootFolder& root) {
    if (root.isMachine()) {
        mkdir(MACHINE_FOLDER, FOLDER_MODE);
    }
}

RootRecord::RootRecord(const RootFolder& root, const std::string& rootPath)
    : name_(root.isMachine() ? MACHINE_NAME : PRIVATE_NAME),
      folder_(openRecordFolder(root, folderPathOf(root, rootPath)), folderPathOf(root, rootPath), [&] {
          throw Failure(ExitStatus::RootNotMade,
                        "another run with a journal, or an undo, works on " +
                            (rootPath.empty() ? std::string("the machine") : "'" + rootPath + "'"),
                        "Wait for its end.");
      }) {
    read();
}

void RootRecord::read() {
    const cv::Descriptor file = openQuietly(folder_.descriptor(), name_, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!file.isOpen() && errno == ENOENT) {
        return;
    }
    std::string text;
    const int error = file.isOpen() ? cv::readAll(file.get(), MOST_BYTES, text) : errno;
    if (error != 0) {
        failRecord(path(), "cannot be read: " + cv::errorText(error));
    }
    try {
        const auto json = parsedJson<nlohmann::ordered_json>(text);
        last_ = {pathIn(json, "journal"), json.at("id").get<std::string>()};
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        failRecord(path(), "is damaged", "Remove it; the runs before can then no longer be undone.");
    }
}

void RootRecord::set(const std::optional<JournalName>& last) {
    if (last) {
        nlohmann::ordered_json json = nlohmann::ordered_json::object();
        addPath(json, "journal", last->path);
        json["id"] = last->id;
        const std::string text = json.dump(1, ' ', true, nlohmann::ordered_json::error_handler_t::replace) + "\n";
        removeLeftovers();
        folder_.replace(name_, text, [&](int fd) {
            if (fchmod(fd, FILE_MODE) != 0) {
                cv::failWith(path(), errno);
            }
        });
    } else if (last_) {
        folder_.remove(name_);
    }
    last_ = last;
}

}  // namespace host
