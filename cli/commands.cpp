#include "cli/commands.h"

namespace {

constexpr command_row all[] = {
    {"models", "the models that can be set up", "", "", run_models},
    {"fields", "every value of a model: key, label, what it can be, default, place", "", "model!", run_fields},
    {"default", "a profile of the defaults", "", "model! out", run_default},
    {"show", "the bytes that a write would send", "", "profile! frames hex c binary script ac out", run_show},
    {"set", "change values of a profile",
     "Every value is checked first; the file is replaced only when all of them are good. A number that is the code "
     "of "
     "a choice stands for that choice, and a text that is shown comes before a number.",
     "profile! settings note out", run_set},
    {"diff", "what differs between two profiles, or a profile and a module",
     "The exit status is 1 when there are differences.", "profile! other! as", run_diff},
    {"ports", "the ports, and whether they can be opened", "", "", run_ports},
    {"read", "read a module into a profile", "", "port! as! out", run_read},
    {"write", "write a profile into a module",
     "With --check the module is read again afterwards; the exit status is 1 when it holds something else.",
     "profile! port! as check dry_run ac", run_write},
    {"timing", "bit timings of CAN FD, as in the calculator",
     "Both phases of a channel share the divider of the 200 MHz clock; a divider that has no candidate for a phase "
     "is "
     "named with the reason. A clock of 100M, 50M, 40M or 25M stands for one divider. The best candidates stand "
     "first.",
     "clock nominal! data sample all", run_timing},
    {"monitor", "the CAN frames that a module in transfer mode reports (B family)",
     "The module is read first, put into transfer mode, and back again at the end; without --seconds that is when "
     "it is "
     "interrupted. With --json every frame is an object on a line of its own.",
     "port! as candump seconds with_check", run_monitor},
    {"send", "send a CAN frame through a module (B family)",
     "123#1122 has a standard identifier of three digits, 00000123#1122 an extended one of eight, 123##01122 is "
     "CAN FD.",
     "port! frame! as channel every count with_check", run_send},
    {"program", "write a profile into the modules on many ports at once",
     "The ports are worked on side by side; a bad module does not stop the others. At the end there is a line for "
     "each "
     "port, and the exit status is the highest of theirs. The journal gets a line for each module as it is done: "
     "time, "
     "port, model, firmware where the module tells it, checksum of the profile, result, the step that failed and "
     "why. With --wait a port that is not there is waited for; once its module is done (a bell rings on a "
     "terminal) "
     "the port must go away and come back for the next one. That goes on until it is interrupted, which is its "
     "good "
     "end unless a module is under way. With --json every module is an object on a line of its own then.",
     "profile! ports! as check wait journal ac", run_program},
};

} // namespace

std::span<const command_row> cli_commands() { return all; }
