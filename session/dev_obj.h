// A device: what is edited of one module, and the sessions that carry it over. It belongs to the thread that made
// it (the GUI thread); only `session` says of its functions which thread may call them.
#pragma once

#include "session/device_session.h"
#include "toolkit/core/date_time.h"

#include <functional>
#include <memory>
#include <optional>

/// What a module held when it was last heard of.
struct module_image {
    std::vector<uint8_t> bytes; ///< as dev_obj::image
    date_time_t at{};           ///< when that was, in local time
};

/// What has just been changed of a device, and by what.
struct edit_cause {
    const char* name = ""; ///< for people, of what changes many values: "读取配置"; empty for one field's edit
    const field* what = nullptr; ///< the field that was edited
    bool typing = false;         ///< one of several strokes at it
};

struct dev_obj {
    dev_obj(const family_descriptor& of, session_reports reports);

    const family_descriptor& of;
    const tk_object_ptr props;   ///< the values
    std::vector<uint8_t> image;  ///< the registers; the values encoded, and what a reply holds beside them
    std::function<void()> shown; ///< shows the code again; set by whoever has a view of it
    /// Unknown before a good read, write or check, and once the module is left.
    std::optional<module_image> in_module;
    std::function<void(const edit_cause&)> edited; ///< set by whoever keeps account of edits
    device_session session;
};

/// Makes the device of a model's family ("VKT630B" gives that of "VKT610B"), with its values at their defaults and
/// encoded. Null for a text that is no model of the list.
std::unique_ptr<dev_obj> dev_open(family_list families, const char* model, session_reports reports = {});

/// Brings the image up to date after the value of `key` was changed (null: any). RET_FAIL for an unknown key.
ret_t dev_encode(dev_obj& dev, const char* key = nullptr);
/// Lets the code be shown again.
void dev_show(const dev_obj& dev);
/// One thing that the user did has changed values, or left a field without changing any.
void dev_edited(const dev_obj& dev, const edit_cause& cause);
/// Takes the image of a checked reply over (none: the old one stands) and decodes it.
void dev_accept(dev_obj& dev, std::span<const uint8_t> image);
/// The module is known to hold this image, by a reply or because it has acknowledged it; an image of another size
/// says nothing.
void dev_module_holds(dev_obj& dev, std::span<const uint8_t> image);
/// What the module holds is not known any more: it was left, or a write has failed.
void dev_module_unknown(dev_obj& dev);
/// Writes the defaults and encodes them.
void dev_restore(dev_obj& dev);
/// What a session of this device is started with.
session_input dev_session_input(const dev_obj& dev, session_kind kind, bool alternative);
