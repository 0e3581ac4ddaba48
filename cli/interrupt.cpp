#include "cli/interrupt.h"

#include "toolkit/core/idle.h"

#include <atomic>

namespace {

std::atomic<bool> interrupted{false};
bool output_lost = false;

} // namespace

void cli_interrupt_clear() {
    interrupted = false;
    output_lost = false;
}

void cli_interrupt() {
    interrupted = true;
    idle_queue([] { return RET_OK; }); // wakes whoever waits
}
bool cli_interrupted() { return interrupted; }
void cli_output_lost() {
    output_lost = true;
    cli_interrupt();
}
bool cli_output_is_lost() { return output_lost; }
