#include "installer-host/run/ReadOnlyView.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "installer-host/run/ChildProcess.h"
#include "installer-host/run/MountNamespace.h"

namespace host {

namespace {

cv::Descriptor makeView(int folder) {
    cv::Descriptor view(open_tree(folder, "", AT_EMPTY_PATH | AT_RECURSIVE | OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC));
    mount_attr readOnly{};
    readOnly.attr_set = MOUNT_ATTR_RDONLY;
    if (view.isOpen() && mount_setattr(view.get(), "", AT_EMPTY_PATH | AT_RECURSIVE, &readOnly, sizeof readOnly) != 0) {
        return cv::Descriptor();
    }
    return view;
}

bool isSameFolder(int one, int other) {
    struct stat a {};
    struct stat b {};
    return fstat(one, &a) == 0 && fstat(other, &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// A message of one byte with room for a descriptor beside it.
struct DescriptorMessage {
    DescriptorMessage() {
        message.msg_iov = &bytes;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
    }

    char byte = 0;
    iovec bytes{&byte, 1};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr message{};
};

/// Makes the view in namespaces of this process's own and sends it.
void sendView(int folder, const std::string& path, int socket) {
    if (!enterUserNamespace()) {
        return;
    }
    // The namespace's own mount of the folder, which the descriptor from outside does not lead to.
    const cv::Descriptor inside(open(path.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const cv::Descriptor view = isSameFolder(inside.get(), folder) ? makeView(inside.get()) : cv::Descriptor();
    if (!view.isOpen()) {
        return;
    }
    DescriptorMessage sent;
    cmsghdr* const header = CMSG_FIRSTHDR(&sent.message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int fd = view.get();
    std::memcpy(CMSG_DATA(header), &fd, sizeof fd);
    static_cast<void>(sendmsg(socket, &sent.message, 0));
}

cv::Descriptor receiveView(int socket) {
    DescriptorMessage received;
    if (recvmsg(socket, &received.message, MSG_CMSG_CLOEXEC) <= 0) {
        return cv::Descriptor();
    }
    const cmsghdr* const header = CMSG_FIRSTHDR(&received.message);
    int fd = -1;
    if (header != nullptr && header->cmsg_type == SCM_RIGHTS) {
        std::memcpy(&fd, CMSG_DATA(header), sizeof fd);
    }
    return cv::Descriptor(fd);
}

}  // namespace

cv::Descriptor readOnlyView(int folder, const std::string& path) {
    cv::Descriptor view = makeView(folder);
    std::array<int, 2> ends{};
    if (view.isOpen() || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return view;
    }
    const cv::Descriptor ours(ends[0]);
    cv::Descriptor theirs(ends[1]);
    const pid_t child = fork();
    if (child == 0) {
        sendView(folder, path, theirs.get());
        _exit(0);
    }
    theirs = cv::Descriptor();
    view = receiveView(ours.get());
    if (child > 0) {
        reap(child);
    }
    return view;
}

}  // namespace host
