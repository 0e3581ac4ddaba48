#include "monitor/record_queue.h"

#include "toolkit/core/text.h"

#include <algorithm>
#include <new>

std::size_t record_capacity_of(const std::string& text, std::string* said) {
    const int32_t number = tk_atoi(text.c_str());
    if (number > 0 && static_cast<std::size_t>(number) <= record_capacity_max)
        return static_cast<std::size_t>(number);
    const std::size_t held = number > 0 ? record_capacity_max : record_capacity_usual;
    if (number != 0 && said != nullptr)
        *said = tk_format("fifo_size %d is out of range: %zu records are kept\n", number, held);
    return held;
}

record_queue::record_queue(std::size_t capacity)
    : capacity_(std::max<std::size_t>(capacity, 1)), kept_(std::make_unique<record_ring>(capacity_)) {}

std::size_t record_queue::size() const {
    const std::lock_guard guard(lock_);
    return kept_->size();
}

std::size_t record_queue::append(std::span<const traffic_record> records) {
    const std::lock_guard guard(lock_);
    std::size_t done = 0;
    try {
        for (; done < records.size(); ++done) {
            if (kept_->push_back(records[done])) dropped_++;
            appended_++;
        }
    } catch (const std::bad_alloc&) {
    }
    return records.size() - done;
}

std::shared_ptr<void> record_queue::clear() {
    auto others = std::make_unique<record_ring>(capacity_);
    const std::lock_guard guard(lock_);
    kept_.swap(others);
    return others;
}

record_queue::look record_queue::rows(std::size_t first, std::span<traffic_record> out) const {
    const std::lock_guard guard(lock_);
    look found{kept_->size(), 0, appended_};
    for (std::size_t row = first; row < found.size && found.copied < out.size(); ++row)
        out[found.copied++] = (*kept_)[found.size - row - 1];
    return found;
}

bool record_queue::numbered(uint64_t number, traffic_record* out) const {
    const std::lock_guard guard(lock_);
    if (number > appended_ || appended_ - number >= kept_->size()) return false;
    *out = (*kept_)[kept_->size() - 1 - static_cast<std::size_t>(appended_ - number)];
    return true;
}

uint64_t record_queue::dropped() const {
    const std::lock_guard guard(lock_);
    return dropped_;
}
