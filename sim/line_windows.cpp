#ifdef _WIN32

#include "sim/line.h"

#include <winsock2.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <ws2tcpip.h>

namespace {

constexpr int host_timeout_ms = 5000; ///< the helper answers at once unless it is gone

/// The TCP port of a name in "COM7=40007;COM8=40008", 0 when there is none.
int host_port(const std::string& com_name) {
    const char* map = std::getenv("VKT_PTY_HOST");
    const std::string text = std::string(";") + (map == nullptr ? "" : map);
    const std::size_t at = text.find(";" + com_name + "=");
    return at == std::string::npos ? 0 : std::atoi(text.c_str() + at + com_name.size() + 2);
}

bool sockets_ready() {
    static const bool ready = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    return ready;
}

/// 1 when bytes (or the end) wait, 0 on time-out, -1 on an error.
int wait_readable(SOCKET s, int timeout_ms) {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(s, &readable);
    timeval limit{timeout_ms / 1000, (timeout_ms % 1000) * 1000};
    return select(0, &readable, nullptr, nullptr, timeout_ms < 0 ? nullptr : &limit);
}

class host_line final : public sim_line {
  public:
    explicit host_line(SOCKET s) : socket_(s) {}
    ~host_line() override {
        hang_up();
        closesocket(socket_);
    }

    int read(uint8_t* bytes, std::size_t size, int timeout_ms) override {
        const std::lock_guard<std::mutex> hold(reading_);
        if (gone_) return -1;
        const int ready = wait_readable(socket_, timeout_ms);
        if (ready <= 0) return ready;
        const int n = recv(socket_, reinterpret_cast<char*>(bytes), static_cast<int>(size), 0);
        return n > 0 && !gone_ ? n : -1;
    }

    bool write(const uint8_t* bytes, std::size_t size) override {
        const std::lock_guard<std::mutex> hold(writing_);
        while (size > 0) {
            if (gone_) return false;
            const int n = send(socket_, reinterpret_cast<const char*>(bytes), static_cast<int>(size), 0);
            if (n <= 0) return false;
            bytes += n;
            size -= static_cast<std::size_t>(n);
        }
        return true;
    }

    int write_some(const uint8_t* bytes, std::size_t size) override {
        return write(bytes, size) ? static_cast<int>(size) : -1;
    }

    /// The helper closes its master side when our half ends, and its half of the connection after that: so the port
    /// has vanished when this returns.
    void hang_up() override {
        if (gone_.exchange(true)) return;
        shutdown(socket_, SD_SEND);
        const std::lock_guard<std::mutex> hold(reading_);
        char rest[256];
        while (wait_readable(socket_, host_timeout_ms) > 0 && recv(socket_, rest, sizeof rest, 0) > 0) {
        }
    }

    std::string path() const override { return {}; }

  private:
    SOCKET socket_;
    std::atomic<bool> gone_{false};
    std::mutex reading_, writing_;
};

} // namespace

std::unique_ptr<sim_line> sim_line_open(const std::string& com_name, std::string* why) {
    const auto refuse = [&](const char* text) {
        if (why != nullptr) *why = com_name + ": " + text;
        return nullptr;
    };
    const int port = host_port(com_name);
    if (port <= 0 || port > 65535) return refuse("not named in VKT_PTY_HOST");
    if (!sockets_ready()) return refuse("no sockets");
    const SOCKET s = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (s == INVALID_SOCKET) return refuse("no socket");
    auto line = std::make_unique<host_line>(s);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<u_short>(port));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(s, reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0)
        return refuse("pty_host does not answer");
    const int at_once = 1;
    setsockopt(s, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&at_once), sizeof at_once);
    // One byte says that a fresh port stands at the link.
    uint8_t ready = 0;
    if (line->read(&ready, 1, host_timeout_ms) != 1) return refuse("pty_host made no port");
    return line;
}

#endif
