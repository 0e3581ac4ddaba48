#include "platform/system.h"
#include "platform/windows/com_port_system.h"

#include <fcntl.h>
#include <io.h>

namespace {

std::string narrow(const wchar_t* wide) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(size > 0 ? size : 1), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
    text.pop_back(); // the end that the system counts in
    return text;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    SetConsoleOutputCP(CP_UTF8);
    // What is printed may be bytes, and files have the line ends that they are given everywhere.
    _setmode(_fileno(stdout), _O_BINARY);
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; i++) arguments.push_back(narrow(argv[i]));
    return vkt_console_main(arguments);
}
