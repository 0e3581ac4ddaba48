#ifndef _WIN32

#include "sim/pty.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace sim {

namespace {

bool make_raw(int fd) {
    termios state{};
    if (::tcgetattr(fd, &state) != 0) return false;
    ::cfmakeraw(&state);
    return ::tcsetattr(fd, TCSANOW, &state) == 0;
}

} // namespace

std::unique_ptr<pty> pty::open(std::string* why) {
    std::unique_ptr<pty> made(new pty);
    const auto refuse = [&](const char* step) {
        if (why != nullptr) *why = std::string(step) + ": " + std::strerror(errno);
        return nullptr;
    };
    made->master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (made->master_ < 0) return refuse("posix_openpt");
    if (::grantpt(made->master_) != 0 || ::unlockpt(made->master_) != 0) return refuse("unlockpt");
    char name[128];
    if (::ptsname_r(made->master_, name, sizeof name) != 0) return refuse("ptsname");
    made->path_ = name;
    made->slave_ = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (made->slave_ < 0) return refuse(name);
    if (!make_raw(made->slave_)) return refuse("tcsetattr");
    if (::pipe2(made->wake_, O_CLOEXEC | O_NONBLOCK) != 0) return refuse("pipe");
    return made;
}

pty::~pty() {
    hang_up();
    for (const int fd : wake_)
        if (fd >= 0) ::close(fd);
}

bool pty::wait(short what, int timeout_ms, short* got) {
    pollfd fds[2] = {{master_, what, 0}, {wake_[0], POLLIN, 0}};
    int result;
    do {
        result = ::poll(fds, 2, timeout_ms);
    } while (result < 0 && errno == EINTR);
    *got = fds[0].revents;
    return result >= 0 && fds[1].revents == 0;
}

int pty::read(uint8_t* bytes, std::size_t size, int timeout_ms) {
    const std::shared_lock<std::shared_mutex> hold(use_);
    if (gone_ || master_ < 0) return -1;
    short got = 0;
    if (!wait(POLLIN, timeout_ms, &got)) return -1;
    if (got == 0) return 0;
    const ssize_t n = ::read(master_, bytes, size);
    if (n > 0) return static_cast<int>(n);
    return n < 0 && (errno == EAGAIN || errno == EINTR) ? 0 : -1;
}

bool pty::write(const uint8_t* bytes, std::size_t size) {
    const std::shared_lock<std::shared_mutex> hold(use_);
    while (size > 0) {
        if (gone_ || master_ < 0) return false;
        const ssize_t n = ::write(master_, bytes, size);
        if (n > 0) {
            bytes += n;
            size -= static_cast<std::size_t>(n);
        } else if (n < 0 && errno != EAGAIN && errno != EINTR) {
            return false;
        } else {
            short got = 0;
            if (!wait(POLLOUT, -1, &got)) return false;
        }
    }
    return true;
}

int pty::write_some(const uint8_t* bytes, std::size_t size) {
    const std::shared_lock<std::shared_mutex> hold(use_);
    int done = 0;
    while (static_cast<std::size_t>(done) < size) {
        if (gone_ || master_ < 0) return -1;
        const ssize_t n = ::write(master_, bytes + done, size - static_cast<std::size_t>(done));
        if (n <= 0) return n == 0 || errno == EAGAIN || errno == EINTR ? done : -1;
        done += static_cast<int>(n);
    }
    return done;
}

void pty::hang_up() {
    gone_ = true;
    if (wake_[1] >= 0) {
        const char byte = 0;
        [[maybe_unused]] const ssize_t woken = ::write(wake_[1], &byte, 1);
    }
    const std::lock_guard<std::shared_mutex> alone(use_);
    // The master goes first: a hang-up is what the port's owner sees, not an ordinary end.
    if (master_ >= 0) ::close(master_);
    if (slave_ >= 0) ::close(slave_);
    master_ = slave_ = -1;
}

} // namespace sim

#endif
