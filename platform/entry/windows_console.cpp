#include "platform/system.h"
#include "platform/windows/com_port_system.h"
#include "platform/windows/utf8.h"

#include <fcntl.h>
#include <io.h>

int wmain(int argc, wchar_t** argv) {
    SetConsoleOutputCP(CP_UTF8);
    // What is printed may be bytes, and files have the line ends that they are given everywhere.
    _setmode(_fileno(stdout), _O_BINARY);
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; i++) arguments.push_back(utf8_narrow(argv[i]));
    return vkt_console_main(arguments);
}
