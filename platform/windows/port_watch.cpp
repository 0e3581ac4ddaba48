#include "platform/port_watch.h"
#include "platform/windows/com_port_system.h"

#include <cfgmgr32.h>

#include <array>
#include <cstring>

namespace com {
namespace {

/// GUID_DEVINTERFACE_COMPORT
constexpr GUID ports_interface = {0x86E0D1E0, 0x8089, 0x11D0, {0x9C, 0xE4, 0x08, 0x00, 0x3E, 0x30, 0x1F, 0x73}};

using register_call = CONFIGRET WINAPI(CM_NOTIFY_FILTER* filter, void* context, PCM_NOTIFY_CALLBACK call,
                                       HCMNOTIFICATION* notice);
using unregister_call = CONFIGRET WINAPI(HCMNOTIFICATION notice);

/// Looked up at run time: where the system has no such functions the program runs without notices.
template <class Function>
Function* find_function(const char* name) {
    static const HMODULE library = LoadLibraryW(L"cfgmgr32.dll");
    Function* function = nullptr;
    const FARPROC found = library == nullptr ? nullptr : GetProcAddress(library, name);
    static_assert(sizeof function == sizeof found);
    std::memcpy(&function, &found, sizeof function);
    return function;
}

/// On a thread of the system's.
DWORD CALLBACK on_change(HCMNOTIFICATION /*notice*/, void* changed, CM_NOTIFY_ACTION /*action*/,
                         CM_NOTIFY_EVENT_DATA* /*data*/, DWORD /*size*/) {
    SetEvent(changed);
    return ERROR_SUCCESS;
}

} // namespace

struct port_watch::inner {
    const HANDLE changed = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE woken = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HCMNOTIFICATION notice = nullptr;

    inner() {
        auto* const start = find_function<register_call>("CM_Register_Notification");
        if (start == nullptr) return;
        CM_NOTIFY_FILTER filter{};
        filter.cbSize = sizeof filter;
        filter.FilterType = CM_NOTIFY_FILTER_TYPE_DEVICEINTERFACE;
        filter.u.DeviceInterface.ClassGuid = ports_interface;
        if (start(&filter, changed, on_change, &notice) != CR_SUCCESS) notice = nullptr;
    }
    ~inner() {
        auto* const stop = find_function<unregister_call>("CM_Unregister_Notification");
        if (stop != nullptr && notice != nullptr) stop(notice); // waits for a call under way
        CloseHandle(changed);
        CloseHandle(woken);
    }
    inner(const inner&) = delete;
    inner& operator=(const inner&) = delete;
};

port_watch::port_watch() : inner_(std::make_unique<inner>()) {}
port_watch::~port_watch() = default;

port_watch::end port_watch::wait(uint32_t ms) {
    const std::array<HANDLE, 2> events = {inner_->woken, inner_->changed};
    switch (WaitForMultipleObjects(events.size(), events.data(), FALSE, ms)) {
    case WAIT_OBJECT_0:
        return end::woken;
    case WAIT_OBJECT_0 + 1:
        return end::noticed;
    default:
        return end::timed_out;
    }
}

void port_watch::wake() { SetEvent(inner_->woken); }

} // namespace com
