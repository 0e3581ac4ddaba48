#include "toolkit/core/fs.h"

#include "platform/system.h"
#include "toolkit/core/text.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>

/// The operating system's file system keeps no state.
struct fs_t {};

struct fs_file_t {
    enum class direction { none, reading, writing };
    std::FILE* stream = nullptr;
    direction last = direction::none;
    bool readable = false; ///< systems disagree on what happens otherwise
    bool failed = false;   ///< some byte written so far is lost
};

namespace {

std::filesystem::path to_path(const char* utf8) {
    if constexpr (sizeof(std::filesystem::path::value_type) == sizeof(char)) {
        return std::filesystem::path(utf8);
    } else {
        return std::filesystem::path(wstr_from_str(utf8));
    }
}

std::filesystem::file_status status_of(const char* path) {
    std::error_code ignored;
    return std::filesystem::status(to_path(path), ignored);
}

/// The C library's mode with "b" in it; empty when `mode` is none.
std::string binary_mode(const char* mode) {
    if (std::strchr("rwa", *mode) == nullptr || *mode == '\0') return "";
    std::string binary = {*mode, 'b'};
    for (const char* at = mode + 1; *at != '\0'; at++) {
        if (*at == '+') {
            binary = {*mode, 'b', '+'};
        } else if (*at != 'b' && *at != 't') {
            return "";
        }
    }
    return binary;
}

/// The C library wants a seek between a write and a read of the same stream, either way round.
void turn(fs_file_t* file, fs_file_t::direction next) {
    if (file->last != next && file->last != fs_file_t::direction::none &&
        std::fseek(file->stream, 0, SEEK_CUR) != 0) {
        file->failed = true;
    }
    file->last = next;
}

/// Where a symbolic link leads to; the path itself where it is none.
std::string behind_link(const char* path) {
    std::error_code failed;
    if (!std::filesystem::is_symlink(to_path(path), failed)) return path;
    const std::filesystem::path target = std::filesystem::canonical(to_path(path), failed);
    if (failed) return path;
    const std::u8string utf8 = target.u8string();
    return {utf8.begin(), utf8.end()};
}

/// Gives `to` the rights of `from`, if that is there and its owner may write it: a file that must not be written
/// could not be filled, nor taken away again where the system refuses to replace it.
void take_rights(const char* from, const char* to) {
    std::error_code failed;
    const std::filesystem::perms rights = std::filesystem::status(to_path(from), failed).permissions();
    const bool writable = (rights & std::filesystem::perms::owner_write) != std::filesystem::perms::none;
    if (!failed && writable && rights != std::filesystem::perms::unknown)
        std::filesystem::permissions(to_path(to), rights, failed);
}

/// A name beside `path` that no other writer, here or in another process, uses.
std::string name_beside(const char* path) {
    static const unsigned process = std::random_device{}();
    static std::atomic<unsigned> counter{0};
    return tk_format("%s.%08x-%u.part", path, process, counter.fetch_add(1));
}

ret_t write_file(const char* path, const char* mode, const std::string& text) {
    fs_file_ptr file(fs_open_file(os_fs(), path, mode));
    if (file == nullptr) return RET_FAIL;
    const bool whole = fs_file_write(file.get(), text.data(), text.size()) == static_cast<int64_t>(text.size());
    const ret_t closed = fs_file_close(file.release());
    return whole ? closed : RET_FAIL;
}

} // namespace

fs_t* os_fs() {
    static fs_t the_fs;
    return &the_fs;
}

bool fs_dir_exist(fs_t* fs, const char* path) {
    if (fs == nullptr || path == nullptr) return false;
    return std::filesystem::is_directory(status_of(path));
}

bool fs_file_exist(fs_t* fs, const char* path) {
    if (fs == nullptr || path == nullptr) return false;
    const std::filesystem::file_status status = status_of(path);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

bool fs_is_device(fs_t* fs, const char* path) {
    if (fs == nullptr || path == nullptr) return false;
    const std::filesystem::file_status status = status_of(path);
    return std::filesystem::exists(status) && std::filesystem::is_other(status);
}

ret_t fs_create_dir(fs_t* fs, const char* path) {
    if (fs == nullptr || path == nullptr) return RET_BAD_PARAMS;
    std::error_code error;
    const bool created = std::filesystem::create_directory(to_path(path), error);
    return created && !error ? RET_OK : RET_FAIL;
}

ret_t fs_remove_file(fs_t* fs, const char* path) {
    if (fs == nullptr || path == nullptr) return RET_BAD_PARAMS;
    if (fs_dir_exist(fs, path)) return RET_FAIL;
    std::error_code error;
    const bool removed = std::filesystem::remove(to_path(path), error);
    return removed && !error ? RET_OK : RET_FAIL;
}

fs_file_t* fs_open_file(fs_t* fs, const char* path, const char* mode) {
    if (fs == nullptr || path == nullptr || mode == nullptr || fs_dir_exist(fs, path)) return nullptr;
    const std::string binary = binary_mode(mode);
    if (binary.empty()) return nullptr;
    std::FILE* const stream = platform_fopen(path, binary.c_str());
    if (stream == nullptr) return nullptr;
    auto* const file = new fs_file_t;
    file->stream = stream;
    file->readable = *mode == 'r' || binary.back() == '+';
    return file;
}

int64_t fs_file_write(fs_file_t* file, const void* bytes, std::size_t size) {
    if (file == nullptr || (bytes == nullptr && size > 0)) return 0;
    if (size == 0) return 0;
    turn(file, fs_file_t::direction::writing);
    const std::size_t written = std::fwrite(bytes, 1, size, file->stream);
    if (written != size) file->failed = true;
    return static_cast<int64_t>(written);
}

int64_t fs_file_read(fs_file_t* file, void* bytes, std::size_t size) {
    if (file == nullptr || !file->readable || (bytes == nullptr && size > 0)) return -1;
    if (size == 0) return 0;
    turn(file, fs_file_t::direction::reading);
    const std::size_t got = std::fread(bytes, 1, size, file->stream);
    if (got == 0 && std::ferror(file->stream) != 0) return -1;
    return static_cast<int64_t>(got);
}

int fs_file_last_byte(fs_file_t* file) {
    if (file == nullptr || !file->readable) return -1;
    turn(file, fs_file_t::direction::reading);
    return std::fseek(file->stream, -1, SEEK_END) == 0 ? std::fgetc(file->stream) : -1;
}

bool fs_file_read_line(fs_file_t* file, std::string* line, std::size_t max_bytes) {
    if (file == nullptr || line == nullptr) return false;
    line->clear();
    if (!file->readable) return false;
    turn(file, fs_file_t::direction::reading);
    // One byte more than asked for is kept: it may be the "\r" of the line end, and it shows where a character
    // ends.
    bool any = false;
    bool more = false;
    int c = 0;
    while ((c = std::fgetc(file->stream)) != EOF) {
        any = true;
        if (c == '\n') break;
        if (line->size() <= max_bytes) {
            line->push_back(static_cast<char>(c));
        } else {
            more = true;
        }
    }
    if (!more && c == '\n' && !line->empty() && line->back() == '\r') line->pop_back();
    if (line->size() > max_bytes) *line = tk_utf8_cut(*line, max_bytes);
    return any;
}

ret_t fs_file_close(fs_file_t* file) {
    if (file == nullptr) return RET_BAD_PARAMS;
    const bool failed = file->failed;
    const bool closed = std::fclose(file->stream) == 0;
    delete file;
    return closed && !failed ? RET_OK : RET_FAIL;
}

bool fs_read_all(const char* path, std::string* text) {
    if (path == nullptr || text == nullptr) return false;
    const fs_file_ptr file(fs_open_file(os_fs(), path, "rb"));
    if (file == nullptr) return false;
    text->clear();
    char chunk[4096];
    int64_t got = 0;
    while ((got = fs_file_read(file.get(), chunk, sizeof(chunk))) > 0) {
        text->append(chunk, static_cast<std::size_t>(got));
    }
    return got == 0;
}

ret_t fs_write_whole(const char* path, const std::string& text) {
    if (path == nullptr) return RET_BAD_PARAMS;
    if (fs_is_device(os_fs(), path)) return write_file(path, "wb", text);
    const std::string target = behind_link(path);
    const std::string beside = name_beside(target.c_str());
    // Empty first: what only its owner may read is never to be read by others, not even for a moment.
    const bool made = write_file(beside.c_str(), "wb", "") == RET_OK;
    if (made) take_rights(target.c_str(), beside.c_str());
    if (made && write_file(beside.c_str(), "wb", text) == RET_OK &&
        platform_replace_file(beside.c_str(), target.c_str()))
        return RET_OK;
    fs_remove_file(os_fs(), beside.c_str());
    return RET_FAIL;
}

ret_t fs_append(const char* path, const std::string& text) {
    if (path == nullptr) return RET_BAD_PARAMS;
    return write_file(path, "ab", text);
}
