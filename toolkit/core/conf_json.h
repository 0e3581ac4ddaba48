// Settings in a file: a JSON object of values under keys, in the order in which the keys were first set. What a
// program does not know in a file stays in it.
#pragma once

#include "toolkit/core/result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

struct conf_json;

struct conf_json_release {
    void operator()(conf_json* conf) const;
};
/// Owns a conf_json. One belongs to one thread at a time.
using conf_json_ptr = std::unique_ptr<conf_json, conf_json_release>;

// What a file may have at most: an honest settings file is far below, and a foreign one costs no time.
inline constexpr std::size_t conf_json_max_bytes = 1024UL * 1024UL;
inline constexpr uint32_t conf_json_max_keys = 5000; ///< of all objects in it together
inline constexpr uint32_t conf_json_max_depth = 64;  ///< objects and lists within each other

/// An empty object that belongs to the file `path`; nothing is read or written. Never null.
conf_json_ptr conf_json_create(const char* path);

/// What the file holds. Null, with one line in the log, when it cannot be opened (a folder cannot), is no file, is
/// empty, is no JSON text (UTF-8, without comments) or no object, or is beyond the limits above. A key that stands
/// twice has its last value. Never throws. Any thread.
conf_json_ptr conf_json_load(const char* path);
/// The same without the line: `why`, if given, is then what it would say behind the path ("is no JSON text").
conf_json_ptr conf_json_load_quietly(const char* path, const char** why = nullptr);

/// True when `key` has a value.
bool conf_json_has(const conf_json* conf, const char* key);

// Getters: `fallback` when conf or key is missing or the value is of another kind. A text reads as a number when
// all of it is one ("5000"), and as a bool when it is "true", "false", "1" or "0"; a number reads as a bool (not 0
// is true) and as its decimal text, a bool as "true" or "false" and as 1 or 0. A number that does not fit gives
// `fallback`; digits behind the point are cut for the whole-numbered ones.
bool conf_json_get_bool(const conf_json* conf, const char* key, bool fallback);
int32_t conf_json_get_int(const conf_json* conf, const char* key, int32_t fallback);
uint32_t conf_json_get_uint(const conf_json* conf, const char* key, uint32_t fallback);
double conf_json_get_double(const conf_json* conf, const char* key, double fallback);
std::string conf_json_get_str(const conf_json* conf, const char* key, const char* fallback);

// Setters: store the value of `key`, or replace it where it stands. RET_BAD_PARAMS when conf, key or text is
// missing, the key is empty, or the number is not finite. Bytes of a text that are no UTF-8 are saved as U+FFFD.
ret_t conf_json_set_bool(conf_json* conf, const char* key, bool value);
ret_t conf_json_set_int(conf_json* conf, const char* key, int32_t value);
ret_t conf_json_set_uint(conf_json* conf, const char* key, uint32_t value);
ret_t conf_json_set_double(conf_json* conf, const char* key, double value);
ret_t conf_json_set_str(conf_json* conf, const char* key, const char* value);

/// Writes the object, one key a line, to `path` (null: the file that it belongs to). The file is replaced whole: a
/// reader sees the old or the new content, and a failure leaves the old. RET_FAIL when it cannot be written, or,
/// with a line in the log, when it would be beyond the limits above; RET_BAD_PARAMS without conf. Any thread.
[[nodiscard]] ret_t conf_json_save_as(const conf_json* conf, const char* path);
