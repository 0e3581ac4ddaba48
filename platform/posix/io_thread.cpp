#include "platform/posix/io_thread.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace posix_com {
namespace {

/// Guarded by io_lock(). Never freed: the thread lives until the process ends.
struct io_state {
    int wake_fd = -1;
    bool polling = false; ///< the thread is in poll, or about to enter it, and must be woken to see changes
    std::vector<std::shared_ptr<port>> watched;
};
io_state& state() {
    static io_state& s = *new io_state;
    return s;
}

/// Milliseconds until `next`, rounded up so that the thread does not come back too early; -1 for never.
int poll_timeout(io_time now, io_time next) {
    if (next == io_time::max()) return -1;
    if (next <= now) return 0;
    const auto ms = std::chrono::ceil<io_ms>(next - now).count();
    return static_cast<int>(std::min<int64_t>(ms, INT_MAX));
}

void take_wake_ups(int wake_fd) {
    uint64_t count = 0;
    while (read(wake_fd, &count, sizeof count) < 0 && errno == EINTR) {
    }
}

/// One round: serve the ports, then sleep until one of them, a time or a wake-up asks for the next.
void io_round(std::unique_lock<std::mutex>& lock) {
    io_state& s = state();
    const io_time now = io_clock::now();
    for (const auto& p : s.watched) port_advance(*p, now, false);
    std::erase_if(s.watched, [](const auto& p) { return !port_busy(*p); });

    const std::vector<std::shared_ptr<port>> polled = s.watched; // keeps their files open while poll looks at them
    std::vector<pollfd> files{{s.wake_fd, POLLIN, 0}};
    io_time next = io_time::max();
    for (const auto& p : polled) {
        files.push_back({p->fd, port_poll_events(*p), 0});
        next = std::min(next, port_next_time(*p));
    }
    s.polling = true;
    lock.unlock();
    const int ready = poll(files.data(), files.size(), poll_timeout(now, next));
    lock.lock();
    s.polling = false;
    if (ready <= 0) return;
    if (files[0].revents != 0) take_wake_ups(s.wake_fd);
    for (std::size_t i = 0; i < polled.size(); i++)
        if ((files[i + 1].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) polled[i]->hung_up = true;
}

void io_thread_main() {
    std::unique_lock<std::mutex> lock(io_lock());
    for (;;) io_round(lock);
}

/// The program's signals are none of this thread's: it starts with all of them blocked.
bool start_thread() {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    if (pthread_sigmask(SIG_SETMASK, &all, &before) != 0) return false;
    bool good = true;
    try {
        std::thread(io_thread_main).detach();
    } catch (const std::system_error&) {
        good = false;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return good;
}

} // namespace

bool io_thread_start() {
    io_state& s = state();
    const std::lock_guard<std::mutex> guard(io_lock());
    if (s.wake_fd >= 0) return true;
    const int fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (fd < 0) return false;
    s.wake_fd = fd;
    if (start_thread()) return true;
    close(fd);
    s.wake_fd = -1;
    return false;
}

void io_thread_watch(const std::shared_ptr<port>& p) {
    io_state& s = state();
    if (std::find(s.watched.begin(), s.watched.end(), p) == s.watched.end()) s.watched.push_back(p);
    io_thread_wake();
}

void io_thread_wake() {
    io_state& s = state();
    if (!s.polling) return;
    const uint64_t one = 1;
    while (write(s.wake_fd, &one, sizeof one) < 0 && errno == EINTR) {
    }
    s.polling = false; // one wake-up is enough
}

} // namespace posix_com
