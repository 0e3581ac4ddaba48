// The devices that this program works on, one per family, made when a model is chosen first and kept for the
// program's life; and the current model. GUI thread.
#pragma once

#include "app/families.h"
#include "session/disconnect.h"

/// What the sessions of devices made from now on report to.
void devices_report_to(session_reports (*reports_of)(const family_pages& pages));
/// The device of a family, null until it was made.
dev_obj* device_of(const family_pages& pages);
/// Makes it, or answers the one that is there. Null when it cannot be made.
dev_obj* device_make(const family_pages& pages);
/// Every device that was made.
std::vector<dev_obj*> devices();
/// Test aid: drops a family's device, as if its model had never been chosen.
void device_forget(const family_pages& pages);

/// The current model's name (at most 99 bytes are kept), "VKT531A" at start.
const std::string& current_model();
void set_current_model(const std::string& name);
/// The model of a family that was the current one last; the device's name where none was.
std::string last_model_of(const family_pages& pages);
/// The current model's family and device; null for a name that is no model, and while there is no device.
const family_pages* current_pages();
dev_obj* current_device();

/// The one disconnect of this program.
disconnector& session_disconnector();
/// True while any session, or a disconnect, runs.
bool session_any_running();
