// The file system. Paths are UTF-8; files are opened in binary form, so bytes and line ends are written as given.
#pragma once

#include "toolkit/core/result.h"

#include <cstdint>
#include <memory>
#include <string>

struct fs_t;
struct fs_file_t;

/// The operating system's file system. Never null. Any thread.
fs_t* os_fs();

bool fs_dir_exist(fs_t* fs, const char* path);
bool fs_file_exist(fs_t* fs, const char* path);
/// A device or a pipe: it takes the place of a file, but reading it may wait for ever. (fs_file_exist is true.)
bool fs_is_device(fs_t* fs, const char* path);
/// Creates one directory (its parent must exist). RET_FAIL when the system refuses.
[[nodiscard]] ret_t fs_create_dir(fs_t* fs, const char* path);
ret_t fs_remove_file(fs_t* fs, const char* path);

/// Opens a file with the C library's mode letters ("rb", "wb+", "a+", "w+"; binary is implied). Null when it cannot
/// be opened; a directory never opens. Any thread; each file belongs to one thread at a time.
fs_file_t* fs_open_file(fs_t* fs, const char* path, const char* mode);
/// Writes all bytes; returns how many were written.
int64_t fs_file_write(fs_file_t* file, const void* bytes, std::size_t size);
/// Reads up to `size` bytes; returns how many, 0 at the end, -1 on an error.
int64_t fs_file_read(fs_file_t* file, void* bytes, std::size_t size);
/// Reads one line without its line end ("\n" or "\r\n") into `line`. A longer line than `max_bytes` is cut between
/// characters and the rest of it skipped. False at the end of the file.
bool fs_file_read_line(fs_file_t* file, std::string* line, std::size_t max_bytes);
/// The last byte of a file that can be read; -1 when it has none or is no file that has an end. What is written
/// next in mode "a+" still goes behind it.
int fs_file_last_byte(fs_file_t* file);
/// Flushes and closes; RET_FAIL when what was written could not all be stored.
ret_t fs_file_close(fs_file_t* file);

struct fs_file_closer {
    void operator()(fs_file_t* file) const { fs_file_close(file); }
};
using fs_file_ptr = std::unique_ptr<fs_file_t, fs_file_closer>;

/// The whole file, or an empty optional-like false. `text` is replaced.
bool fs_read_all(const char* path, std::string* text);
/// Writes beside `path` and renames, so that a reader sees the old or the new content and a failure leaves the old.
/// A device or a pipe is written into; of a symbolic link what it leads to is replaced, and the link stays. A file
/// that was there before keeps its rights where its owner may write it.
[[nodiscard]] ret_t fs_write_whole(const char* path, const std::string& text);
/// Appends `text` to `path`, creating the file when missing (never its folder). RET_FAIL when it cannot.
[[nodiscard]] ret_t fs_append(const char* path, const std::string& text);
