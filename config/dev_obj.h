// Device objects (one per family), the generic store, the port-name map, and the current model.
#pragma once

#include "config/models.h"
#include "toolkit/core/object.h"
#include "toolkit/core/thread.h"

#include <cstdint>
#include <string>

struct widget; // a window or page of the toolkit; only handed on

/// What a family brings along; its room fills it at start-up with family_ops_register. A slot that a family does
/// not need stays empty.
struct family_ops {
    ret_t (*encode)(void* context) = nullptr;                  ///< image from properties; `context` is ignored
    ret_t (*decode)(void* context) = nullptr;                  ///< properties from image
    ret_t (*show_code)(widget* window, void* event) = nullptr; ///< image as text into the home page's "mledit"
    uint32_t (*connect_entry)() = nullptr;                     ///< session threads
    uint32_t (*read_entry)() = nullptr;
    uint32_t (*write_entry)() = nullptr;
};

struct dev_obj {
    const char* model =
        nullptr; ///< "VKT510A" or "VKT610B"; for the generic family what dev_open was asked for is not kept
    uint32_t state = 0;
    family_ops ops;
    tk_object* props = nullptr;      ///< null for the generic family: config_store() holds its values
    uint8_t flags[4] = {0, 0, 0, 0}; ///< [1]: the pages were filled
    tk_mutex* mutex = nullptr; ///< the family's session lock and the lock of its properties and image (A and B)
};

/// Makes the device object of a model's family, with its properties at their defaults. "VKT610B", "VKT630B" and
/// "VKT631B" give the B object (model name "VKT610B"), "VKT510A" the A object, any other text a zeroed record. Null
/// only when memory runs out. GUI thread.
dev_obj* dev_open(const char* model);

/// The process-wide object of a family; null until one was put there. GUI thread; session threads may read it.
dev_obj* dev_get(family of);
/// Puts an object into the family's slot (what was there stays allocated: threads may still know it).
void dev_set(family of, dev_obj* dev);

/// Registers a family's operations; dev_open copies them into the objects it makes. Before the first dev_open.
void family_ops_register(family of, const family_ops& ops);
const family_ops& family_ops_of(family of);

/// The generic models' values. Null before config_objects_create.
tk_object* config_store();
/// "COM0" .. "COM499" to "\\.\COMn", and list positions to lines of the port list. Null before
/// config_objects_create.
tk_object* com_name_map();
/// Guards com_name_map where the port list writes it.
tk_mutex* store_lock();
/// Taken by a generic session for its whole run.
tk_mutex* generic_session_lock();

/// The one-time creation of the four objects above, with the generic defaults and the 500 port names. A second call
/// does nothing and returns RET_FAIL. GUI thread, before any worker.
ret_t config_objects_create();
/// Exit: drops the store, then the map, then destroys the store lock, then the session lock. While workers still
/// run (tk_thread_alive_count() is not 0) nothing they may touch is freed: it only forgets nothing and returns
/// RET_FAIL.
ret_t config_objects_destroy();

/// The current model name (at most 99 bytes are kept), "VKT531A" at start. Any thread.
std::string current_model();
void set_current_model(const std::string& name);
/// The family of the current model; the generic one for a name that is no model.
family current_family();
