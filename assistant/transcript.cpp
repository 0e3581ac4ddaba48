#include "assistant/transcript.h"

#include "assistant/frame_walk.h"
#include "toolkit/core/worker.h"

#include <algorithm>

namespace {

constexpr int walk_steps = 4096;

constexpr std::size_t rows_of(std::size_t bytes) {
    return (bytes + transcript_row_bytes - 1) / transcript_row_bytes;
}

} // namespace

// Memory that is not written yet costs nothing.
transcript::transcript() {
    for (store* one : {&received_, &sent_})
        one->bytes = std::make_unique_for_overwrite<uint8_t[]>(transcript_store_size);
}

std::size_t transcript::store::append(std::span<const uint8_t> more) {
    const std::size_t kept = std::min(more.size(), transcript_store_size - fill);
    std::copy_n(more.begin(), kept, bytes.get() + fill);
    fill += kept;
    return kept;
}

void transcript::append(std::span<const uint8_t> bytes, const time_stamp& at, bool sent) {
    {
        const std::lock_guard guard(lock_);
        store& into = sent ? sent_ : received_;
        const piece one{row_count(), into.fill, into.append(bytes), at.local_us, sent};
        if (one.size > 0) pieces_.push_back(one);
        count_.dropped += bytes.size() - one.size;
        if (!sent) ++receives_;
    }
    came_.notify_all();
}

void transcript::clear() {
    const std::lock_guard guard(lock_);
    received_.fill = sent_.fill = walked_ = 0;
    pieces_.clear();
    frames_.clear();
    count_ = {.clears = count_.clears + 1};
}

std::size_t transcript::row_count() const {
    return pieces_.empty() ? 0 : pieces_.back().row + rows_of(pieces_.back().size);
}

transcript_counts transcript::counts() const {
    const std::lock_guard guard(lock_);
    transcript_counts now = count_;
    now.received = received_.fill;
    now.sent = sent_.fill;
    now.rows = row_count();
    now.frames = frames_.size();
    return now;
}

// ---- rows ----

transcript_row transcript::row_of(const piece& one, std::size_t row) const {
    const std::size_t skip = (row - one.row) * transcript_row_bytes;
    transcript_row made{.local_us = one.local_us, .sent = one.sent, .first = skip == 0};
    made.size = static_cast<uint8_t>(std::min(one.size - skip, transcript_row_bytes));
    const store& in = one.sent ? sent_ : received_;
    std::copy_n(in.bytes.get() + one.from + skip, made.size, made.room.begin());
    return made;
}

std::size_t transcript::rows(std::size_t first, std::span<transcript_row> out) const {
    const std::lock_guard guard(lock_);
    const std::size_t end = row_count();
    if (first >= end) return 0;
    const std::size_t copied = std::min(out.size(), end - first);
    auto one = std::prev(std::ranges::upper_bound(pieces_, first, {}, &piece::row));
    for (std::size_t i = 0; i < copied; ++i) {
        if (first + i >= one->row + rows_of(one->size)) ++one;
        out[i] = row_of(*one, first + i);
    }
    return copied;
}

// ---- frames ----

bool transcript::frame(std::size_t index, transcript_frame* out) const {
    const std::lock_guard guard(lock_);
    if (index >= frames_.size()) return false;
    const auto waiting = received_.from(frames_[index].from);
    const walk_step step = walk_look(waiting, walk_look_max); // how many wait does not matter any more
    *out = {.local_us = frames_[index].local_us,
            .identifier = step.parsed.identifier,
            .channel = step.parsed.channel,
            .type = step.parsed.type,
            .size = static_cast<uint8_t>(step.parsed.data.size())};
    std::ranges::copy(step.parsed.data, out->room.begin());
    return true;
}

/// When a received byte arrived: the time of its piece.
int64_t transcript::arrival_of(std::size_t at) const {
    for (auto one = pieces_.rbegin(); one != pieces_.rend(); ++one)
        if (!one->sent && one->from <= at) return one->local_us;
    return 0;
}

bool transcript::walk() {
    const std::lock_guard guard(lock_);
    for (int steps = 0; steps < walk_steps; ++steps) {
        const auto waiting = received_.from(walked_);
        const walk_step step = walk_look(waiting, waiting.size());
        if (step.advance == 0) return steps > 0;
        if (step.good) frames_.push_back({walked_, arrival_of(walked_ + step.advance - 1)});
        if (step.frame && !step.good) ++count_.frames_bad;
        if (!step.frame) ++count_.noise;
        walked_ += step.advance;
    }
    return true;
}

bool transcript::wait_received(uint64_t* seen) const {
    std::unique_lock guard(lock_);
    if (!came_.wait(guard, worker_stop_token(), wait_for_ever, [&] { return receives_ != *seen; })) return false;
    *seen = receives_;
    return true;
}
