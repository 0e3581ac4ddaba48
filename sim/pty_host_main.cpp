// pty_host COM7=LINKPATH:TCPPORT ...: makes serial ports for programs under Wine, which cannot make
// pseudo-terminals.
//
// Each port is a pseudo-terminal whose device node is linked at LINKPATH. Who connects to TCPPORT on the loopback
// interface is its far end: one byte says that the port is there, then bytes go both ways. When the connection ends
// the port hangs up, and a fresh one stands at the same link before the connection is closed from this side.
#include "sim/pty.h"

#include <arpa/inet.h>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

struct host_port {
    std::string name, link;
    int tcp_port = 0;
    int listener = -1;
};

bool parse_port(const std::string& argument, host_port* out) {
    const std::size_t equals = argument.find('=');
    const std::size_t colon = argument.rfind(':');
    if (equals == std::string::npos || equals == 0 || colon == std::string::npos || colon < equals + 2)
        return false;
    out->name = argument.substr(0, equals);
    out->link = argument.substr(equals + 1, colon - equals - 1);
    out->tcp_port = std::atoi(argument.c_str() + colon + 1);
    return out->tcp_port > 0 && out->tcp_port < 65536;
}

/// Makes a fresh pseudo-terminal at the port's link, in one step for whoever opens it meanwhile.
std::unique_ptr<sim::pty> make_port(const host_port& port) {
    std::string why;
    std::unique_ptr<sim::pty> pty = sim::pty::open(&why);
    const std::string fresh = port.link + ".new";
    ::unlink(fresh.c_str());
    if (pty != nullptr && ::symlink(pty->path().c_str(), fresh.c_str()) == 0 &&
        ::rename(fresh.c_str(), port.link.c_str()) == 0)
        return pty;
    std::fprintf(stderr, "pty_host: %s: cannot make a port at %s: %s\n", port.name.c_str(), port.link.c_str(),
                 why.empty() ? std::strerror(errno) : why.c_str());
    return nullptr;
}

bool listen_on(host_port* port) {
    port->listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(port->listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_port = htons(static_cast<uint16_t>(port->tcp_port));
    at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::bind(port->listener, reinterpret_cast<const sockaddr*>(&at), sizeof at) == 0 &&
           ::listen(port->listener, 8) == 0;
}

bool send_all(int client, const uint8_t* bytes, int size) {
    while (size > 0) {
        const ssize_t n = ::send(client, bytes, static_cast<std::size_t>(size), MSG_NOSIGNAL);
        if (n <= 0) return false;
        bytes += n;
        size -= static_cast<int>(n);
    }
    return true;
}

/// Bytes on their way to the port. Who reads from the client never waits for the port's owner to take them, so that
/// the end of the connection is always seen.
class outbox {
  public:
    void add(const uint8_t* bytes, std::size_t size) {
        const std::lock_guard<std::mutex> hold(lock_);
        waiting_.insert(waiting_.end(), bytes, bytes + size);
        changed_.notify_one();
    }
    void end() {
        const std::lock_guard<std::mutex> hold(lock_);
        ended_ = true;
        changed_.notify_one();
    }
    /// Waits for bytes; false at the end.
    bool take(std::vector<uint8_t>* bytes) {
        std::unique_lock<std::mutex> hold(lock_);
        changed_.wait(hold, [this] { return ended_ || !waiting_.empty(); });
        *bytes = std::exchange(waiting_, {});
        return !ended_;
    }

  private:
    std::mutex lock_;
    std::condition_variable changed_;
    std::vector<uint8_t> waiting_;
    bool ended_ = false;
};

/// Serves one client until it ends its half of the connection.
void bridge(const host_port& port, sim::pty* pty, int client) {
    outbox out;
    std::thread to_port([&] {
        for (std::vector<uint8_t> bytes; out.take(&bytes);)
            if (!pty->write(bytes.data(), bytes.size())) return;
    });
    std::thread from_port([&] {
        uint8_t bytes[512];
        for (int n; (n = pty->read(bytes, sizeof bytes, -1)) >= 0;)
            if (n > 0 && !send_all(client, bytes, n)) return;
    });
    uint8_t bytes[512];
    for (ssize_t n; (n = ::recv(client, bytes, sizeof bytes, 0)) > 0;) out.add(bytes, static_cast<std::size_t>(n));
    ::unlink(port.link.c_str()); // first: the number of a device node that is gone is soon somebody else's
    pty->hang_up();
    out.end();
    to_port.join();
    from_port.join();
}

void serve(host_port* port) {
    for (;;) {
        const int client = ::accept4(port->listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) continue;
        const int on = 1;
        ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        const uint8_t ready = '+';
        const std::unique_ptr<sim::pty> pty = make_port(*port);
        if (pty != nullptr && send_all(client, &ready, 1)) bridge(*port, pty.get(), client);
        ::close(client);
    }
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    static std::vector<host_port> ports;
    for (int i = 1; i < argc; i++) {
        host_port port;
        if (!parse_port(argv[i], &port)) {
            std::fprintf(stderr, "pty_host: cannot read \"%s\"; expected COM7=LINKPATH:TCPPORT\n", argv[i]);
            return 2;
        }
        ports.push_back(port);
    }
    if (ports.empty()) {
        std::fprintf(stderr, "usage: pty_host COM7=LINKPATH:TCPPORT ...\n");
        return 2;
    }
    for (host_port& port : ports) {
        // Once for trying, so that a link that cannot be made is known now.
        if (make_port(port) == nullptr) return 1;
        ::unlink(port.link.c_str());
        if (!listen_on(&port)) {
            std::perror(("pty_host: " + port.name).c_str());
            return 1;
        }
    }
    std::vector<std::thread> threads;
    for (host_port& port : ports) threads.emplace_back(serve, &port);
    std::printf("ready\n");
    std::fflush(stdout);
    for (std::thread& thread : threads) thread.join();
}
