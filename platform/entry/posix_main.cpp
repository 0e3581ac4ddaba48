#include "platform/posix/command_line.h"
#include "platform/system.h"

#include <csignal>

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // whoever read our output may go away; that is no reason to die
    return vkt_main(argc > 1 ? command_line_join(argc - 1, argv + 1) : std::wstring());
}
