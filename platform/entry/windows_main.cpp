#include "platform/system.h"
#include "platform/windows/com_port_system.h"

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, wchar_t* command_line, int /*show*/) {
    return vkt_main(command_line);
}
