#include "cli/run.h"
#include "platform/com_port.h"
#include "platform/system.h"
#include "toolkit/core/worker.h"

#include <cstdio>
#include <cstdlib>

namespace {

bool write(std::FILE* stream, const std::string& text) {
    return std::fwrite(text.data(), 1, text.size(), stream) == text.size() && std::fflush(stream) == 0;
}

} // namespace

int vkt_console_main(const std::vector<std::string>& arguments) {
    platform_on_interrupt(cli_interrupt, exit_interrupted);
    const cli_streams streams{
        .out = [](const std::string& text) { return write(stdout, text); },
        .err = [](const std::string& text) { write(stderr, text); },
        .terminal = platform_is_terminal(stderr),
        .colour = platform_is_terminal(stdout) && std::getenv("NO_COLOR") == nullptr,
        .size = [] { return platform_terminal_size(stderr); },
    };
    // Faults of the port, for tests.
    const char* faults = std::getenv("VKT_COM_FAULT");
    if (faults != nullptr && !com::fault_parse(faults)) write(stderr, "vkt: VKT_COM_FAULT not understood\n");
    const int status = cli_run(arguments, streams);
    // No thread may see the process being taken down around it.
    platform_exit_now(status);
}
