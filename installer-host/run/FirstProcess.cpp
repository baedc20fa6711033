#include "installer-host/run/FirstProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <nlohmann/json.hpp>

namespace host {

Watcher FirstProcess::watcher() {
    // bubblewrap is to wait for the byte.
    fcntl(go_.read.get(), F_SETFL, 0);
    return {info_.read.get(), [this] { return hear(); }};
}

Watching FirstProcess::hear() {
    std::array<char, 1024> buffer;
    const ssize_t count = read(info_.read.get(), buffer.data(), buffer.size());
    if (count <= 0) {
        return count < 0 && (errno == EAGAIN || errno == EINTR) ? Watching::GoOn : Watching::Stop;
    }
    told_.append(buffer.data(), static_cast<std::size_t>(count));
    if (told_.find('}') == std::string::npos) {
        return Watching::GoOn;
    }
    return begin(told_) ? Watching::Stop : Watching::EndChild;
}

bool FirstProcess::begin(const std::string& told) {
    const nlohmann::json info = nlohmann::json::parse(told, nullptr, false);
    if (!info.is_object() || !info.contains("child-pid") || !info["child-pid"].is_number_integer()) {
        return false;
    }
    // It waits for the byte, so the number is still its own.
    id_ = info["child-pid"].get<pid_t>();
    process_ = cv::Descriptor(static_cast<int>(syscall(SYS_pidfd_open, id_, 0)));
    if (!process_.isOpen()) {
        return false;
    }
    onMade_(id_);
    return cv::writeAll(go_.write.get(), "g") == 0;
}

void FirstProcess::end() {
    if (!process_.isOpen()) {
        return;
    }
    constexpr int PATIENCE_MILLISECONDS = 5000;
    syscall(SYS_pidfd_send_signal, process_.get(), SIGKILL, nullptr, 0);
    pollfd end{process_.get(), POLLIN, 0};
    poll(&end, 1, PATIENCE_MILLISECONDS);
    process_ = cv::Descriptor();
}

}  // namespace host
