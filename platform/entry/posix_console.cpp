#include "platform/system.h"

#include <csignal>

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // whoever read our output may go away; a module is still left in order
    return vkt_console_main(argc > 1 ? std::vector<std::string>(argv + 1, argv + argc)
                                     : std::vector<std::string>());
}
