#include "toolkit/ravel/qt/handles.h"

#include <cstdint>
#include <vector>

namespace {

constexpr int place_bits = 24; ///< 16 million widgets at a time; what is left of 64 bits counts generations
constexpr std::uintptr_t place_mask = (std::uintptr_t{1} << place_bits) - 1;

struct place {
    widget_state* state = nullptr;
    std::uintptr_t generation = 0;
};

std::vector<place> places;
std::vector<std::uintptr_t> free_places;

} // namespace

widget* handle_take(widget_state* state) {
    if (free_places.empty()) {
        free_places.push_back(places.size());
        places.emplace_back();
    }
    const std::uintptr_t at = free_places.back();
    free_places.pop_back();
    places[at].state = state;
    const std::uintptr_t generation = ++places[at].generation;
    return reinterpret_cast<widget*>(generation << place_bits | at);
}

widget_state* handle_find(const widget* handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const std::uintptr_t at = value & place_mask;
    if (at >= places.size() || places[at].generation != value >> place_bits) return nullptr;
    return places[at].state;
}

void handle_drop(const widget* handle) {
    if (handle_find(handle) == nullptr) return;
    const std::uintptr_t at = reinterpret_cast<std::uintptr_t>(handle) & place_mask;
    places[at].state = nullptr;
    free_places.push_back(at);
}
