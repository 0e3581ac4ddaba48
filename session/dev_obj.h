// A device: what is edited of one module, and the sessions that carry it over. It belongs to the thread that made
// it (the GUI thread); only `session` says of its functions which thread may call them.
#pragma once

#include "session/device_session.h"

#include <functional>
#include <memory>

struct dev_obj {
    dev_obj(const family_descriptor& of, session_reports reports);

    const family_descriptor& of;
    const tk_object_ptr props;   ///< the values
    std::vector<uint8_t> image;  ///< the registers; the values encoded, and what a reply holds beside them
    std::function<void()> shown; ///< shows the code again; set by whoever has a view of it
    device_session session;
};

/// Makes the device of a model's family ("VKT630B" gives that of "VKT610B"), with its values at their defaults and
/// encoded. Null for a text that is no model of the list.
std::unique_ptr<dev_obj> dev_open(family_list families, const char* model, session_reports reports = {});

/// Brings the image up to date after the value of `key` was changed (null: any). RET_FAIL for an unknown key.
ret_t dev_encode(dev_obj& dev, const char* key = nullptr);
/// Lets the code be shown again.
void dev_show(const dev_obj& dev);
/// Takes the image of a checked reply over (none: the old one stands) and decodes it.
void dev_accept(dev_obj& dev, std::span<const uint8_t> image);
/// Writes the defaults and encodes them.
void dev_restore(dev_obj& dev);
/// What a session of this device is started with.
session_input dev_session_input(const dev_obj& dev, session_kind kind, bool alternative);
