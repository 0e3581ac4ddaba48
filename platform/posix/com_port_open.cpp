// Opening, setting up and closing ports.
#include "platform/com_port.h"
#include "platform/posix/com_port_calls.h"
#include "platform/posix/io_thread.h"
#include "platform/posix/line_settings.h"
#include "platform/posix/port_names.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace posix_com {
namespace {

struct error_row {
    int system;
    DWORD error;
};
constexpr error_row open_errors[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},       {ENODEV, ERROR_FILE_NOT_FOUND},     {ENXIO, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_FILE_NOT_FOUND},      {EIO, ERROR_FILE_NOT_FOUND},        {ELOOP, ERROR_FILE_NOT_FOUND},
    {ENAMETOOLONG, ERROR_PATH_NOT_FOUND}, {EACCES, ERROR_ACCESS_DENIED},      {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},        {EBUSY, ERROR_ACCESS_DENIED},       {EROFS, ERROR_ACCESS_DENIED},
    {ENOTTY, ERROR_ACCESS_DENIED},        {EWOULDBLOCK, ERROR_ACCESS_DENIED}, {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},  {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
};

DWORD open_error(int system) {
    for (const error_row& row : open_errors)
        if (row.system == system) return row.error;
    return ERROR_GEN_FAILURE;
}

int access_mode(DWORD access) {
    const bool write = (access & GENERIC_WRITE) != 0;
    if ((access & GENERIC_READ) == 0) return write ? O_WRONLY : O_RDONLY;
    return write ? O_RDWR : O_RDONLY;
}

/// Opens a terminal for this handle alone. False with errno set; `fd` is then open or -1, for the caller to close.
bool open_terminal(const std::string& node, DWORD access, int* fd) {
    struct stat about {};
    if (stat(node.c_str(), &about) != 0) return false;
    if (!S_ISCHR(about.st_mode)) { // opening some other things has effects, and none of them is a port
        errno = ENOTTY;
        return false;
    }
    *fd = open(node.c_str(), access_mode(access) | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    return *fd >= 0 && flock(*fd, LOCK_EX | LOCK_NB) == 0 && line_make_raw(*fd);
}

/// Calls a function of the terminal driver under the lock. One that fails on a port that is there was asked for
/// something that no driver does; on one that is gone it finds that out.
template <class Ask>
BOOL ask_driver(HANDLE handle, Ask ask) {
    const std::shared_ptr<port> p = handle_port(handle);
    if (p == nullptr) return FALSE;
    const std::lock_guard<std::mutex> guard(io_lock());
    if (p->lost) return fail(ERROR_NOT_READY);
    if (ask(*p)) return TRUE;
    if (errno == EINVAL) return fail(ERROR_INVALID_PARAMETER);
    port_lose(*p);
    return fail(ERROR_NOT_READY);
}

} // namespace
} // namespace posix_com

using namespace posix_com;

HANDLE CreateFileA(const char* path, DWORD access, DWORD /*share*/, void* /*security*/, DWORD disposition,
                   DWORD flags, HANDLE model) {
    const auto refuse = [](DWORD error) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    };
    if (path == nullptr || *path == '\0') return refuse(ERROR_PATH_NOT_FOUND);
    if (disposition != OPEN_EXISTING || model != nullptr) return refuse(ERROR_INVALID_PARAMETER);
    const std::string node = path_node(path);
    if (node.empty()) return refuse(ERROR_FILE_NOT_FOUND);
    if (!io_thread_start()) return refuse(ERROR_NOT_ENOUGH_MEMORY);

    const auto made = std::make_shared<port>();
    if (!open_terminal(node, access, &made->fd)) return refuse(open_error(errno));
    made->overlapped = (flags & FILE_FLAG_OVERLAPPED) != 0;
    made->readable = (access & GENERIC_READ) != 0;
    made->writable = (access & GENERIC_WRITE) != 0;
    made->signal = std::make_shared<event>(true, true);
    return handle_add({made->signal, made});
}

com::denial com::why_denied(const std::string& path) {
    const std::string node = path_node(path);
    struct stat about {};
    if (stat(node.c_str(), &about) == 0 && !S_ISCHR(about.st_mode)) return denial::no_port;
    const bool forbidden = access(node.c_str(), R_OK | W_OK) != 0 && errno == EACCES;
    return forbidden ? denial::forbidden : denial::taken;
}

BOOL CloseHandle(HANDLE handle) {
    const object closed = handle_remove(handle);
    if (closed.signal == nullptr) return fail(ERROR_INVALID_HANDLE);
    if (closed.serial == nullptr) return TRUE;
    // The I/O thread may keep the file open for the blink of an eye; the port is free for the next owner at once.
    const std::lock_guard<std::mutex> guard(io_lock());
    port_cancel(*closed.serial, nullptr, true, true);
    closed.serial->lost = true;
    flock(closed.serial->fd, LOCK_UN);
    io_thread_wake();
    return TRUE;
}

BOOL SetupComm(HANDLE handle, DWORD /*in_queue*/, DWORD /*out_queue*/) {
    DWORD waiting = 0; // the driver's queues are as long as they are
    return ask_driver(handle, [&](port& p) { return line_in_queue(p.fd, &waiting); });
}

BOOL SetCommState(HANDLE handle, DCB* state) {
    if (state == nullptr) return fail(ERROR_INVALID_PARAMETER);
    return ask_driver(handle, [&](port& p) {
        if (!line_apply(p.fd, *state)) return false;
        p.character_us = line_character_us(*state);
        return true;
    });
}

BOOL SetCommTimeouts(HANDLE handle, COMMTIMEOUTS* timeouts) {
    if (timeouts == nullptr) return fail(ERROR_INVALID_PARAMETER);
    const bool impossible =
        timeouts->ReadIntervalTimeout == MAXDWORD && timeouts->ReadTotalTimeoutConstant == MAXDWORD;
    if (impossible) return fail(ERROR_INVALID_PARAMETER);
    const std::shared_ptr<port> p = handle_port(handle);
    if (p == nullptr) return FALSE;
    const std::lock_guard<std::mutex> guard(io_lock());
    p->timeouts = *timeouts;
    return TRUE;
}

BOOL GetCommTimeouts(HANDLE handle, COMMTIMEOUTS* timeouts) {
    if (timeouts == nullptr) return fail(ERROR_INVALID_PARAMETER);
    const std::shared_ptr<port> p = handle_port(handle);
    if (p == nullptr) return FALSE;
    const std::lock_guard<std::mutex> guard(io_lock());
    *timeouts = p->timeouts;
    return TRUE;
}

BOOL PurgeComm(HANDLE handle, DWORD flags) {
    constexpr DWORD known = PURGE_TXABORT | PURGE_RXABORT | PURGE_TXCLEAR | PURGE_RXCLEAR;
    if (flags == 0 || (flags & ~known) != 0) return fail(ERROR_INVALID_PARAMETER);
    return ask_driver(handle, [&](port& p) {
        port_cancel(p, nullptr, (flags & PURGE_RXABORT) != 0, (flags & PURGE_TXABORT) != 0);
        if ((flags & PURGE_RXCLEAR) != 0 && !line_drop_input(p.fd)) return false;
        return (flags & PURGE_TXCLEAR) == 0 || line_drop_output(p.fd);
    });
}

BOOL ClearCommError(HANDLE handle, DWORD* errors, COMSTAT* status) {
    COMSTAT found{};
    const BOOL good = ask_driver(handle, [&](port& p) {
        return line_in_queue(p.fd, &found.cbInQue) && line_out_queue(p.fd, &found.cbOutQue);
    });
    if (!good) return FALSE;
    if (errors != nullptr) *errors = 0;
    if (status != nullptr) *status = found;
    return TRUE;
}
