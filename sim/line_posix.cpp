#ifndef _WIN32

#include "sim/line.h"

#include "platform/com_port.h"
#include "sim/pty.h"

#include <map>
#include <mutex>

namespace {

/// Which line a port name belongs to now: a line that ends takes only its own mapping with it.
std::mutex names_lock;
std::map<std::string, const void*>& names() {
    static std::map<std::string, const void*> map;
    return map;
}

class pty_line final : public sim_line {
  public:
    pty_line(const std::string& com_name, std::unique_ptr<sim::pty> made)
        : name_(com_name), pty_(std::move(made)), path_(pty_->path()) {
        const std::lock_guard<std::mutex> hold(names_lock);
        names()[name_] = this;
        com::map_port(name_, path_);
    }
    ~pty_line() override {
        pty_->hang_up();
        const std::lock_guard<std::mutex> hold(names_lock);
        if (!owns_name()) return;
        names().erase(name_);
        com::map_port(name_, "");
    }
    int read(uint8_t* bytes, std::size_t size, int timeout_ms) override {
        return pty_->read(bytes, size, timeout_ms);
    }
    bool write(const uint8_t* bytes, std::size_t size) override { return pty_->write(bytes, size); }
    int write_some(const uint8_t* bytes, std::size_t size) override { return pty_->write_some(bytes, size); }
    void hang_up() override {
        {
            // Not left at the old device node, whose number is soon somebody else's, nor given to the fixed rule.
            const std::lock_guard<std::mutex> hold(names_lock);
            if (owns_name()) com::map_port(name_, "/dev/pts/unplugged");
        }
        pty_->hang_up();
    }
    std::string path() const override { return path_; }

  private:
    /// With the names' lock held.
    bool owns_name() const {
        const auto at = names().find(name_);
        return at != names().end() && at->second == this;
    }

    std::string name_;
    std::unique_ptr<sim::pty> pty_;
    std::string path_;
};

} // namespace

std::unique_ptr<sim_line> sim_line_open(const std::string& com_name, std::string* why) {
    auto made = sim::pty::open(why);
    if (made == nullptr) return nullptr;
    return std::make_unique<pty_line>(com_name, std::move(made));
}

#endif
