// A bounded queue with its newest at the end: when it is full, appending drops its oldest. Appending, dropping and
// access by index cost the same at any size and any capacity. Memory is taken in blocks as it is needed and given
// back as the front leaves them, so that an empty ring of a million costs next to nothing and a full one allocates
// nothing.
//
// Not for several threads at once: whoever shares a ring locks it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/// @tparam T anything that is moved without throwing; an element is destroyed when it is dropped.
template <typename T>
class ring {
    static_assert(std::is_nothrow_move_constructible_v<T>);

  public:
    /// Elements of one block.
    static constexpr std::size_t block_size = 256;

    /// Holds at most `capacity` elements (0 counts as 1).
    explicit ring(std::size_t capacity) : capacity_(std::max<std::size_t>(capacity, 1)) {}
    ~ring() { clear(); }
    ring(const ring&) = delete;
    ring& operator=(const ring&) = delete;

    std::size_t capacity() const { return capacity_; }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    /// Appends `value`; true when the oldest was dropped for it. Throws std::bad_alloc only, and nothing has
    /// changed then.
    bool push_back(T value) {
        const bool full = size_ == capacity_;
        if (full) {
            drop_front();
        } else {
            make_room(slot(size_));
        }
        std::construct_at(at(slot(size_)), std::move(value));
        size_++;
        return full;
    }
    /// Drops the oldest. Nothing when empty.
    void pop_front() {
        if (empty()) return;
        const std::size_t left = first_ / block_size;
        drop_front();
        // At the front's end of a block only a ring that was nearly full still has its newest elements in it.
        if (first_ / block_size != left && (empty() || slot(size_ - 1) / block_size != left)) blocks_[left].reset();
    }
    /// Drops everything and gives all memory back.
    void clear() {
        while (!empty()) drop_front();
        std::vector<std::unique_ptr<block>>().swap(blocks_);
    }

    /// The element at a place counted from the oldest, which is 0; below size().
    T& operator[](std::size_t index) { return *at(slot(index)); }
    const T& operator[](std::size_t index) const { return *at(slot(index)); }
    T& front() { return (*this)[0]; }
    T& back() { return (*this)[size_ - 1]; }
    const T& front() const { return (*this)[0]; }
    const T& back() const { return (*this)[size_ - 1]; }

    /// How many blocks it holds.
    std::size_t blocks() const {
        return static_cast<std::size_t>(std::ranges::count_if(blocks_, [](const auto& b) { return b != nullptr; }));
    }

  private:
    struct block {
        alignas(T) std::byte room[sizeof(T) * block_size];
    };

    std::size_t slot(std::size_t index) const {
        const std::size_t from = capacity_ - first_; // slots before the wrap
        return index < from ? first_ + index : index - from;
    }
    T* at(std::size_t where) const {
        return std::launder(reinterpret_cast<T*>(blocks_[where / block_size]->room) + where % block_size);
    }
    void make_room(std::size_t where) {
        if (blocks_.empty()) blocks_.resize((capacity_ - 1) / block_size + 1);
        auto& b = blocks_[where / block_size];
        if (b == nullptr) b = std::make_unique_for_overwrite<block>();
    }
    void drop_front() {
        std::destroy_at(at(first_));
        first_ = slot(1);
        size_--;
    }

    const std::size_t capacity_;
    std::size_t first_ = 0; ///< the oldest one's slot
    std::size_t size_ = 0;
    std::vector<std::unique_ptr<block>> blocks_; ///< by slot; null where no element is
};
