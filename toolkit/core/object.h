// Property objects: typed values under string keys. Used as configuration stores and as messages between threads.
#pragma once

#include "toolkit/core/result.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct tk_object;

/// Creates an empty property object with one reference. Never fails (throws std::bad_alloc only). Any thread.
tk_object* object_default_create();

/// Adds a reference and returns the same object. A null object stays null. Any thread.
tk_object* tk_object_ref(tk_object* object);

/// Drops a reference; the last one frees the object. Null is allowed. Returns RET_BAD_PARAMS for null. Any thread.
ret_t tk_object_unref(tk_object* object);

// Setters: store (or replace, changing the type if need be) the value of `key`.
// Return RET_BAD_PARAMS when object or key is missing or the key is empty, RET_FAIL when the object refuses the
// key (tk_object_refuse), else RET_OK. Any thread: every object has a lock of its own.
ret_t tk_object_set_prop_bool(tk_object* object, const char* key, bool value);
ret_t tk_object_set_prop_uint8(tk_object* object, const char* key, uint8_t value);
ret_t tk_object_set_prop_int(tk_object* object, const char* key, int32_t value);
ret_t tk_object_set_prop_uint32(tk_object* object, const char* key, uint32_t value);
ret_t tk_object_set_prop_str(tk_object* object, const char* key, const char* value);
ret_t tk_object_set_prop_pointer(tk_object* object, const char* key, void* value);

// Getters: never fail; return `fallback` when object or key is missing. Numbers convert between the numeric types
// (the low bits are kept; bool is value != 0); a number reads as its decimal text; a text read as a number gives
// what tk_atoi makes of it; a pointer reads only as a pointer. Any thread.
bool tk_object_get_prop_bool(const tk_object* object, const char* key, bool fallback);
uint8_t tk_object_get_prop_uint8(const tk_object* object, const char* key, uint8_t fallback);
int32_t tk_object_get_prop_int(const tk_object* object, const char* key, int32_t fallback);
uint32_t tk_object_get_prop_uint32(const tk_object* object, const char* key, uint32_t fallback);
std::string tk_object_get_prop_str(const tk_object* object, const char* key, const char* fallback);
void* tk_object_get_prop_pointer(const tk_object* object, const char* key, void* fallback);

/// True when `key` has a value. Any thread.
bool tk_object_has_prop(const tk_object* object, const char* key);

/// Removes `key`. RET_FAIL when it was not there. Any thread.
ret_t tk_object_remove_prop(tk_object* object, const char* key);

/// The keys in the order in which they were first set. Any thread.
std::vector<std::string> tk_object_keys(const tk_object* object);

/// Test aid: from now on every set of `key` fails with RET_FAIL (`key` null: none does any more). Any thread.
void tk_object_refuse(tk_object* object, const char* key);

struct tk_object_release {
    void operator()(tk_object* object) const { tk_object_unref(object); }
};
/// Owns one reference.
using tk_object_ptr = std::unique_ptr<tk_object, tk_object_release>;
