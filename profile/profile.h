// Profiles: a model's values in a file that people can read. UTF-8 JSON, the values by key in the order of the
// pages; a number that is shown as something else has that beside it:
//
//   {
//       "format": 1,
//       "program": "VKTCfgTools 2.0.1",
//       "model": "VKT531A",
//       "note": "",
//       "values": {
//           "change_mode": {"value": 2, "text": "透明带标识转换"},
//           "change_star": 0,
//           ...
//       }
//   }
//
// A file is checked whole before any of it counts. A key that it lacks stands for its default.
#pragma once

#include "profile/value.h"
#include "session/dev_obj.h"

inline constexpr int profile_format = 1;
inline constexpr std::size_t profile_max_bytes = 1024UL * 1024UL; ///< an honest one has a few thousand
inline constexpr std::size_t profile_note_max = 1000;             ///< bytes

struct profile_value {
    const field* what = nullptr;
    field_value value;
};

/// All values of one model.
struct profile {
    const family_descriptor* of = nullptr;
    std::string model;
    std::string program{}; ///< what saved it
    std::string note{};
    std::vector<profile_value> values{}; ///< all of fields_by_page, in that order

    const profile_value* find(std::string_view key) const;
};

/// What is wrong with a file: a key of it and why, in the user's words. An empty key means the file.
struct profile_refusal {
    std::string key;
    std::string reason;
};
/// "KEY: REASON"
std::string profile_refusal_line(const profile_refusal& refusal);

struct profile_read_result {
    std::optional<profile> loaded{}; ///< only without any refusal
    std::vector<profile_refusal> refusals{};
};

/// "VKTCfgTools 2.0.1"
const char* program_version();

/// The defaults of a model. Nothing for a text that is no model of the list.
std::optional<profile> profile_default(family_list families, const std::string& model);
/// What is edited of a device: the values that a write would send.
profile profile_of(const dev_obj& dev, const std::string& model);

/// Reads a profile's text. `for_family`, if given, refuses another family's models; whether the model is the one at
/// hand the caller sees. Every value that cannot be taken has a refusal of its own. Any thread.
profile_read_result profile_parse(const std::string& text, family_list families,
                                  const family_descriptor* for_family = nullptr);
/// The same of a file (UTF-8 path), of which at most profile_max_bytes are read.
profile_read_result profile_load(const std::string& path, family_list families,
                                 const family_descriptor* for_family = nullptr);

/// The file's text, with a line end behind it.
std::string profile_text(const profile& from);
/// Replaces the file whole; a failure (RET_FAIL) leaves what was there. Any thread.
[[nodiscard]] ret_t profile_save(const profile& from, const std::string& path);

/// Writes all values into the device's store and encodes them; its family is the profile's. RET_FAIL, and the store
/// as it was, when the store refuses one, RET_BAD_PARAMS for another family's device. The device's thread.
ret_t profile_apply(const profile& from, dev_obj& dev);
