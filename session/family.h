// A family of models is one value: its models, its fields, its codec and its sessions. Whatever serves every family
// (pages, sessions, the home page, the command line) loops over such values or asks the one at hand; outside a
// family's folder nobody names it.
#pragma once

#include "session/code_span.h"
#include "session/field.h"
#include "session/session_script.h"

#include <string_view>
#include <vector>

struct dev_obj;

struct family_model {
    const char* name;
    int selector_value; ///< value of the model's option in the model selector
};

/// How a configuration is written as text.
struct code_form {
    bool alternative = false; ///< the family's switch is on: a C list, or frames that start with AC
    bool restored = false;    ///< shown by restoring the defaults
};

/// Every function is called on the thread that owns the device (the GUI thread).
struct family_descriptor {
    const char* device; ///< name of the family's device, whichever of its models was chosen
    std::span<const family_model> models;
    field_rows fields;
    std::span<const char* const> pages{}; ///< names of the pages that hold the fields, as their tabs show them
    std::size_t image_size;               ///< bytes
    bool of_registers = false; ///< the image is 32-bit registers, least significant byte first; else bytes

    void (*encode)(dev_obj& dev); ///< image from store
    void (*decode)(dev_obj& dev); ///< store from image
    /// Brings the bytes up to date that `key` feeds; null: a whole encode is as good. RET_FAIL for an unknown key.
    ret_t (*encode_key)(dev_obj& dev, const char* key) = nullptr;
    bool encodes_after_decode = false;     ///< what a reply holds beside the fields is not kept
    const char* kept_at_restore = nullptr; ///< key of the module's own value
    /// The text; `spans`, where given, receives where it shows the image's bytes, in the order of the text.
    std::string (*code_text)(const dev_obj& dev, code_form form, code_spans* spans);

    std::span<const session_script> scripts;
    /// What a session of this kind sends beside its fixed requests, in order.
    std::vector<session_bytes> (*requests)(const dev_obj& dev, session_kind kind, bool alternative);
    /// What a module answers to a write request that it has taken; null: it is not known beforehand.
    session_bytes (*acknowledgement)(std::span<const uint8_t> request) = nullptr;
    bool typed_paths = true; ///< a port's text that is no port name is the path of a device
    /// What a module hears when it is disconnected; empty: nothing.
    std::span<const uint8_t> leave{};
    /// Why the traffic monitor cannot be opened with this configuration, null when it can. Null: no monitor.
    const char* (*monitor_refusal)(const dev_obj& dev) = nullptr;
};

/// A value of the module itself: a restore keeps it, so it has no default, and no profile holds it.
inline bool is_modules_own(const family_descriptor& of, const field& what) {
    return of.kept_at_restore != nullptr && what.key != nullptr && what.key == std::string_view(of.kept_at_restore);
}

/// The families of a program, in the order of the model selector.
using family_list = std::span<const family_descriptor* const>;

/// The family of a model, null for a text that is no model of the list.
inline const family_descriptor* family_of_model(family_list families, std::string_view model) {
    for (const family_descriptor* of : families)
        for (const family_model& row : of->models)
            if (model == row.name) return of;
    return nullptr;
}
