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
};

} // namespace

std::span<const command_row> cli_commands() { return all; }
