#include "config/dev_obj.h"

#include "config/defaults.h"
#include "toolkit/core/text.h"

#include <array>
#include <atomic>
#include <mutex>
#include <new>

namespace {

constexpr int port_names = 500;
constexpr std::size_t model_name_bytes = 99;

std::array<family_ops, family_count> registered_ops;
std::array<std::atomic<dev_obj*>, family_count> slots;

std::atomic<tk_object*> store;
std::atomic<tk_object*> port_map;
std::atomic<tk_mutex*> map_lock;
std::atomic<tk_mutex*> session_mutex;

std::mutex model_mutex;
std::string model_name = "VKT531A";

std::size_t index_of(family of) { return static_cast<std::size_t>(of); }

} // namespace

dev_obj* dev_open(const char* model) {
    auto* dev = new (std::nothrow) dev_obj;
    const model_row* row = model == nullptr ? nullptr : model_find(model);
    if (dev == nullptr || row == nullptr || row->of == family::generic) return dev;
    dev->model = row->of == family::a ? "VKT510A" : "VKT610B";
    dev->ops = family_ops_of(row->of);
    dev->props = object_default_create();
    dev->mutex = tk_mutex_create();
    defaults_write(row->of, dev->props);
    return dev;
}

dev_obj* dev_get(family of) { return slots[index_of(of)]; }
void dev_set(family of, dev_obj* dev) { slots[index_of(of)] = dev; }

void family_ops_register(family of, const family_ops& ops) { registered_ops[index_of(of)] = ops; }
const family_ops& family_ops_of(family of) { return registered_ops[index_of(of)]; }

tk_object* config_store() { return store; }
tk_object* com_name_map() { return port_map; }
tk_mutex* store_lock() { return map_lock; }
tk_mutex* generic_session_lock() { return session_mutex; }

ret_t config_objects_create() {
    if (store != nullptr) return RET_FAIL;
    tk_object* values = object_default_create();
    defaults_write(family::generic, values);
    tk_object* names = object_default_create();
    for (int n = 0; n < port_names; n++)
        tk_object_set_prop_str(names, tk_format("COM%d", n).c_str(), tk_format("\\\\.\\COM%d", n).c_str());
    store = values;
    port_map = names;
    session_mutex = tk_mutex_create();
    map_lock = tk_mutex_create();
    return RET_OK;
}

ret_t config_objects_destroy() {
    if (store == nullptr || tk_thread_alive_count() != 0) return RET_FAIL;
    tk_object_unref(store.exchange(nullptr));
    tk_object_unref(port_map.exchange(nullptr));
    tk_mutex_destroy(map_lock.exchange(nullptr));
    tk_mutex_destroy(session_mutex.exchange(nullptr));
    return RET_OK;
}

std::string current_model() {
    const std::lock_guard hold(model_mutex);
    return model_name;
}

void set_current_model(const std::string& name) {
    const std::lock_guard hold(model_mutex);
    model_name = tk_utf8_cut(name, model_name_bytes);
}

family current_family() {
    const model_row* row = model_find(current_model());
    return row == nullptr ? family::generic : row->of;
}
