#include "platform/posix/handles.h"
#include "platform/posix/com_port_calls.h"

#include <chrono>
#include <unordered_map>
#include <utility>

namespace posix_com {
namespace {

struct handle_table {
    std::mutex lock;
    uintptr_t last = 0x100;
    std::unordered_map<uintptr_t, object> objects;
};

// Never freed: threads that outlive main may still use handles.
handle_table& table() {
    static handle_table& t = *new handle_table;
    return t;
}

thread_local DWORD last_error = 0;

/// The event of a handle; null, with ERROR_INVALID_HANDLE set, when it is none.
std::shared_ptr<event> handle_event(HANDLE handle) {
    const object found = handle_find(handle);
    if (found.signal != nullptr && found.serial == nullptr) return found.signal;
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

uintptr_t number_of(HANDLE handle) { return reinterpret_cast<uintptr_t>(handle); }

} // namespace

void event::set() {
    const std::lock_guard<std::mutex> guard(lock_);
    signalled_ = true;
    if (manual_reset_)
        changed_.notify_all();
    else
        changed_.notify_one();
}

void event::reset() {
    const std::lock_guard<std::mutex> guard(lock_);
    signalled_ = false;
}

bool event::wait(DWORD ms) {
    std::unique_lock<std::mutex> guard(lock_);
    const auto ready = [this] { return signalled_; };
    if (ms == INFINITE)
        changed_.wait(guard, ready);
    else if (!changed_.wait_until(guard, std::chrono::steady_clock::now() + std::chrono::milliseconds(ms), ready))
        return false;
    if (!manual_reset_) signalled_ = false;
    return true;
}

HANDLE handle_add(object what) {
    handle_table& t = table();
    const std::lock_guard<std::mutex> guard(t.lock);
    t.last += 4;
    t.objects.emplace(t.last, std::move(what));
    return reinterpret_cast<HANDLE>(t.last);
}

object handle_find(HANDLE handle) {
    handle_table& t = table();
    const std::lock_guard<std::mutex> guard(t.lock);
    const auto at = t.objects.find(number_of(handle));
    return at == t.objects.end() ? object{} : at->second;
}

object handle_remove(HANDLE handle) {
    handle_table& t = table();
    const std::lock_guard<std::mutex> guard(t.lock);
    const auto node = t.objects.extract(number_of(handle));
    return node.empty() ? object{} : node.mapped();
}

std::shared_ptr<port> handle_port(HANDLE handle) {
    std::shared_ptr<port> serial = handle_find(handle).serial;
    if (serial == nullptr) SetLastError(ERROR_INVALID_HANDLE);
    return serial;
}

BOOL fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

} // namespace posix_com

DWORD GetLastError() { return posix_com::last_error; }
void SetLastError(DWORD error) { posix_com::last_error = error; }

HANDLE CreateEventA(void* /*security*/, BOOL manual_reset, BOOL initial_state, const char* name) {
    if (name != nullptr) { // nothing here is shared between processes
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    const auto made = std::make_shared<posix_com::event>(manual_reset != FALSE, initial_state != FALSE);
    return posix_com::handle_add({made, nullptr});
}

BOOL SetEvent(HANDLE handle) {
    const std::shared_ptr<posix_com::event> signal = posix_com::handle_event(handle);
    if (signal != nullptr) signal->set();
    return signal != nullptr ? TRUE : FALSE;
}

BOOL ResetEvent(HANDLE handle) {
    const std::shared_ptr<posix_com::event> signal = posix_com::handle_event(handle);
    if (signal != nullptr) signal->reset();
    return signal != nullptr ? TRUE : FALSE;
}

DWORD WaitForSingleObject(HANDLE object, DWORD ms) {
    const std::shared_ptr<posix_com::event> signal = posix_com::handle_find(object).signal;
    if (signal != nullptr) return signal->wait(ms) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
    SetLastError(ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
}
