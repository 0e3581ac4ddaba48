#include "platform/port_watch.h"

#include "platform/posix/port_names.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <map>
#include <poll.h>
#include <set>
#include <string>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace com {
namespace {

using clock = std::chrono::steady_clock;

/// An adapter's node is made first and gets its rights a moment later: both are notices.
constexpr uint32_t noticed_events = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB;

/// The files whose coming and going counts, by folder. A name given by hand may be a link, whose target counts too.
std::map<std::string, std::set<std::string>> files_by_folder() {
    std::map<std::string, std::set<std::string>> files;
    files[posix_com::device_folder()];
    const auto add = [&files](const std::filesystem::path& node) {
        if (node.has_filename()) files[node.parent_path()].insert(node.filename());
    };
    for (const std::filesystem::path node : posix_com::nodes_by_hand()) {
        std::error_code error;
        add(node);
        const std::filesystem::path target = std::filesystem::canonical(node, error);
        if (!error && target != node) add(target);
    }
    return files;
}

} // namespace

struct port_watch::inner {
    const int notices = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    const int woken = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    std::map<int, std::string> folders; ///< by the watch's number

    ~inner() {
        for (const int fd : {notices, woken})
            if (fd >= 0) close(fd);
    }

    /// Watches the folders that are there. True when one of them is new here: who knows what came before.
    bool watch_folders() {
        bool is_new = false;
        for (const auto& [folder, names] : files_by_folder()) {
            const int number = inotify_add_watch(notices, folder.c_str(), noticed_events);
            is_new = (number >= 0 && folders.emplace(number, folder).second) || is_new;
        }
        return is_new;
    }

    bool counts(const inotify_event& event) {
        if ((event.mask & IN_Q_OVERFLOW) != 0) return true;
        const auto folder = folders.find(event.wd);
        if (folder == folders.end()) return false;
        if ((event.mask & IN_IGNORED) != 0) { // the folder itself has gone
            folders.erase(folder);
            return true;
        }
        const std::string name = event.len == 0 ? "" : event.name;
        if (folder->second == posix_com::device_folder() && posix_com::is_rule_node(name)) return true;
        return files_by_folder()[folder->second].contains(name);
    }

    /// Takes what was noticed; true when any of it counts.
    bool take_notices() {
        alignas(inotify_event) std::array<char, 4096> bytes{};
        bool any = false;
        for (;;) {
            const ssize_t got = read(notices, bytes.data(), bytes.size());
            if (got <= 0) return any;
            for (std::size_t at = 0; at < static_cast<std::size_t>(got);) {
                const auto& event = *reinterpret_cast<const inotify_event*>(bytes.data() + at);
                any = counts(event) || any;
                at += sizeof event + event.len;
            }
        }
    }

    bool take_wake() {
        uint64_t count = 0;
        return read(woken, &count, sizeof count) == static_cast<ssize_t>(sizeof count);
    }
};

port_watch::port_watch() : inner_(std::make_unique<inner>()) { inner_->watch_folders(); }
port_watch::~port_watch() = default;

port_watch::end port_watch::wait(uint32_t ms) {
    if (inner_->watch_folders()) return end::noticed;
    const auto until = clock::now() + std::chrono::milliseconds(ms);
    std::array<pollfd, 2> fds = {pollfd{inner_->notices, POLLIN, 0}, pollfd{inner_->woken, POLLIN, 0}};
    for (;;) {
        int left = -1;
        if (ms != UINT32_MAX) {
            const auto rest = std::chrono::ceil<std::chrono::milliseconds>(until - clock::now()).count();
            left = static_cast<int>(std::clamp<int64_t>(rest, 0, INT32_MAX));
        }
        const int ready = poll(fds.data(), fds.size(), left);
        if (inner_->take_wake()) return end::woken;
        if (inner_->take_notices()) return end::noticed;
        if (ready == 0) return end::timed_out;
    }
}

void port_watch::wake() {
    const uint64_t one = 1;
    static_cast<void>(write(inner_->woken, &one, sizeof one) == static_cast<ssize_t>(sizeof one));
}

} // namespace com
