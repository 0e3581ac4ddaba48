#include "platform/com_port.h"
#include "platform/windows/utf8.h"

#include <setupapi.h>

#include <array>

namespace {

/// The present devices of one class.
class device_set {
  public:
    explicit device_set(const GUID& of) : handle_(SetupDiGetClassDevsW(&of, nullptr, nullptr, DIGCF_PRESENT)) {}
    ~device_set() {
        if (handle_ != INVALID_HANDLE_VALUE) SetupDiDestroyDeviceInfoList(handle_);
    }
    device_set(const device_set&) = delete;
    device_set& operator=(const device_set&) = delete;

    /// False behind the last one.
    bool at(DWORD index, SP_DEVINFO_DATA* device) const {
        *device = {};
        device->cbSize = sizeof *device;
        return handle_ != INVALID_HANDLE_VALUE && SetupDiEnumDeviceInfo(handle_, index, device) != FALSE;
    }
    /// The name of the port that a device makes ("COM7"); empty when it makes none.
    std::string port_name(SP_DEVINFO_DATA* device) const {
        const HKEY key = SetupDiOpenDevRegKey(handle_, device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
        if (key == INVALID_HANDLE_VALUE) return {};
        std::array<wchar_t, 64> name{};
        DWORD size = sizeof name;
        const LSTATUS found = RegGetValueW(key, nullptr, L"PortName", RRF_RT_REG_SZ, nullptr, name.data(), &size);
        RegCloseKey(key);
        return found == ERROR_SUCCESS ? utf8_narrow(name.data()) : std::string();
    }
    /// A text that the system keeps of a device; empty when it keeps none.
    std::string text(SP_DEVINFO_DATA* device, DWORD property) const {
        std::array<wchar_t, 256> text{};
        auto* bytes = reinterpret_cast<BYTE*>(text.data());
        const DWORD size = sizeof text - sizeof(wchar_t); // it may come without an end
        if (SetupDiGetDeviceRegistryPropertyW(handle_, device, property, nullptr, bytes, size, nullptr) == FALSE)
            return {};
        return utf8_narrow(text.data());
    }

  private:
    const HDEVINFO handle_;
};

/// "@oem3.inf,%maker%;Maker": a text that the driver's file names, with what stands for it.
std::string without_source(const std::string& text) {
    return text.starts_with('@') ? text.substr(text.rfind(';') + 1) : text;
}

/// "USB Serial Port (COM7)" without the port's name, which stands beside it anyway.
std::string without_port(std::string text, const std::string& name) {
    const std::string tail = " (" + name + ")";
    if (text.ends_with(tail)) text.resize(text.size() - tail.size());
    return text;
}

constexpr GUID ports_class = {0x4D36E978, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

} // namespace

std::string com::describe_port(const std::string& name) {
    const device_set devices(ports_class);
    SP_DEVINFO_DATA device;
    for (DWORD i = 0; devices.at(i, &device); ++i) {
        if (devices.port_name(&device) != name) continue;
        const std::string maker = without_source(devices.text(&device, SPDRP_MFG));
        std::string described = without_source(devices.text(&device, SPDRP_FRIENDLYNAME));
        if (described.empty()) described = without_source(devices.text(&device, SPDRP_DEVICEDESC));
        described = without_port(described, name);
        return described.empty() || maker.empty() ? maker + described : maker + " " + described;
    }
    return {};
}
