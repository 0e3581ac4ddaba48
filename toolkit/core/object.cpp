#include "toolkit/core/object.h"

#include "toolkit/core/text.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <utility>
#include <variant>

namespace {

using value_t = std::variant<bool, uint8_t, int32_t, uint32_t, std::string, void*>;

struct entry_t {
    uint64_t order = 0; ///< rises with every key that is set for the first time
    value_t value;
};

} // namespace

struct tk_object {
    std::atomic<uint32_t> references{1};
    mutable std::mutex lock;
    uint64_t next_order = 0;
    std::map<std::string, entry_t, std::less<>> entries;
    std::set<std::string, std::less<>> refused;
};

namespace {

template <typename T>
ret_t set_value(tk_object* object, const char* key, T value) {
    if (object == nullptr || key == nullptr || *key == '\0') return RET_BAD_PARAMS;
    value_t fresh(std::in_place_type<T>, std::move(value));
    const std::lock_guard<std::mutex> guard(object->lock);
    if (object->refused.find(key) != object->refused.end()) return RET_FAIL;
    auto found = object->entries.find(key);
    if (found == object->entries.end()) {
        object->entries.emplace(key, entry_t{object->next_order++, std::move(fresh)});
    } else {
        found->second.value = std::move(fresh);
    }
    return RET_OK;
}

/// Calls `convert` with the stored value under the lock; `fallback` when there is none.
template <typename R, typename F>
R get_value(const tk_object* object, const char* key, R fallback, F convert) {
    if (object == nullptr || key == nullptr) return fallback;
    const std::lock_guard<std::mutex> guard(object->lock);
    const auto found = object->entries.find(key);
    if (found == object->entries.end()) return fallback;
    return std::visit([&](const auto& stored) -> R { return convert(stored, fallback); }, found->second.value);
}

template <typename R>
struct to_number {
    R operator()(const std::string& stored, R) const { return static_cast<R>(tk_atoi(stored.c_str())); }
    R operator()(void* const&, R fallback) const { return fallback; }
    template <typename T>
    R operator()(const T& stored, R) const {
        return static_cast<R>(stored);
    }
};

struct to_text {
    std::string operator()(const std::string& stored, const std::string&) const { return stored; }
    std::string operator()(void* const&, const std::string& fallback) const { return fallback; }
    template <typename T>
    std::string operator()(const T& stored, const std::string&) const {
        return std::to_string(stored);
    }
};

struct to_pointer {
    void* operator()(void* const& stored, void*) const { return stored; }
    template <typename T>
    void* operator()(const T&, void* fallback) const {
        return fallback;
    }
};

} // namespace

tk_object* object_default_create() { return new tk_object; }

tk_object* tk_object_ref(tk_object* object) {
    if (object != nullptr) object->references.fetch_add(1, std::memory_order_relaxed);
    return object;
}

ret_t tk_object_unref(tk_object* object) {
    if (object == nullptr) return RET_BAD_PARAMS;
    if (object->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete object;
    return RET_OK;
}

ret_t tk_object_set_prop_bool(tk_object* object, const char* key, bool value) {
    return set_value(object, key, value);
}

ret_t tk_object_set_prop_uint8(tk_object* object, const char* key, uint8_t value) {
    return set_value(object, key, value);
}

ret_t tk_object_set_prop_int(tk_object* object, const char* key, int32_t value) {
    return set_value(object, key, value);
}

ret_t tk_object_set_prop_uint32(tk_object* object, const char* key, uint32_t value) {
    return set_value(object, key, value);
}

ret_t tk_object_set_prop_str(tk_object* object, const char* key, const char* value) {
    if (value == nullptr) return RET_BAD_PARAMS;
    return set_value(object, key, std::string(value));
}

ret_t tk_object_set_prop_pointer(tk_object* object, const char* key, void* value) {
    return set_value(object, key, value);
}

bool tk_object_get_prop_bool(const tk_object* object, const char* key, bool fallback) {
    return get_value(object, key, fallback, to_number<bool>());
}

uint8_t tk_object_get_prop_uint8(const tk_object* object, const char* key, uint8_t fallback) {
    return get_value(object, key, fallback, to_number<uint8_t>());
}

int32_t tk_object_get_prop_int(const tk_object* object, const char* key, int32_t fallback) {
    return get_value(object, key, fallback, to_number<int32_t>());
}

uint32_t tk_object_get_prop_uint32(const tk_object* object, const char* key, uint32_t fallback) {
    return get_value(object, key, fallback, to_number<uint32_t>());
}

std::string tk_object_get_prop_str(const tk_object* object, const char* key, const char* fallback) {
    return get_value(object, key, std::string(fallback != nullptr ? fallback : ""), to_text());
}

void* tk_object_get_prop_pointer(const tk_object* object, const char* key, void* fallback) {
    return get_value(object, key, fallback, to_pointer());
}

bool tk_object_has_prop(const tk_object* object, const char* key) {
    if (object == nullptr || key == nullptr) return false;
    const std::lock_guard<std::mutex> guard(object->lock);
    return object->entries.find(key) != object->entries.end();
}

ret_t tk_object_remove_prop(tk_object* object, const char* key) {
    if (object == nullptr || key == nullptr) return RET_BAD_PARAMS;
    const std::lock_guard<std::mutex> guard(object->lock);
    const auto found = object->entries.find(key);
    if (found == object->entries.end()) return RET_FAIL;
    object->entries.erase(found);
    return RET_OK;
}

std::vector<std::string> tk_object_keys(const tk_object* object) {
    std::vector<std::string> keys;
    if (object == nullptr) return keys;
    std::vector<std::pair<uint64_t, std::string>> ordered;
    {
        const std::lock_guard<std::mutex> guard(object->lock);
        for (const auto& [key, entry] : object->entries) ordered.emplace_back(entry.order, key);
    }
    std::sort(ordered.begin(), ordered.end());
    keys.reserve(ordered.size());
    for (auto& item : ordered) keys.push_back(std::move(item.second));
    return keys;
}

void tk_object_refuse(tk_object* object, const char* key) {
    if (object == nullptr) return;
    const std::lock_guard<std::mutex> guard(object->lock);
    if (key == nullptr) {
        object->refused.clear();
    } else {
        object->refused.insert(key);
    }
}
