#include "tests/sample_family/module.h"

#include <algorithm>

namespace {

std::size_t size_of(uint8_t function) { return function == 3 ? 6 : 3; }

std::vector<uint8_t> sealed(std::vector<uint8_t> frame) {
    uint8_t sum = 0;
    for (uint8_t byte : frame) sum = static_cast<uint8_t>(sum + byte);
    frame.push_back(sum);
    return frame;
}

} // namespace

sample_module::sample_module(const std::string& com_name) : line_(sim_line_open(com_name)) {
    if (line_ != nullptr) static_cast<void>(thread_.start({.name = "sample_module"}, [this] { return serve(); }));
}

std::array<uint8_t, 3> sample_module::memory() const {
    const std::lock_guard hold(lock_);
    return memory_;
}

void sample_module::set_memory(const std::array<uint8_t, 3>& memory) {
    const std::lock_guard hold(lock_);
    memory_ = memory;
}

std::vector<uint8_t> sample_module::heard() const {
    const std::lock_guard hold(lock_);
    return heard_;
}

uint32_t sample_module::serve() {
    constexpr int look_ms = 20;
    std::vector<uint8_t> waiting;
    while (!worker_should_stop()) {
        std::array<uint8_t, 64> bytes{};
        const int got = line_->read(bytes.data(), bytes.size(), look_ms);
        if (got < 0) return 0;
        waiting.insert(waiting.end(), bytes.begin(), bytes.begin() + got);
        while (waiting.size() >= 2 && waiting.size() >= size_of(waiting[1])) {
            const auto end = waiting.begin() + static_cast<std::ptrdiff_t>(size_of(waiting[1]));
            answer({waiting.begin(), end});
            waiting.erase(waiting.begin(), end);
        }
    }
    return 0;
}

void sample_module::answer(const std::vector<uint8_t>& frame) {
    std::vector<uint8_t> reply = {'S', static_cast<uint8_t>(frame[1] | 0x80)};
    {
        const std::lock_guard hold(lock_);
        heard_.push_back(frame[1]);
        if (frame != sealed({frame.begin(), frame.end() - 1})) return;
        if (frame[1] == 3) std::copy_n(frame.begin() + 2, memory_.size(), memory_.begin());
        if (frame[1] == 2) reply.insert(reply.end(), memory_.begin(), memory_.end());
    }
    if (frame[1] == 4) return; // it is left without a word
    const std::vector<uint8_t> out = sealed(reply);
    line_->write(out.data(), out.size());
}
