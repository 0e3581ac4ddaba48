// What was asked for on the command line.
#pragma once

#include "profile/export.h"

#include <string>
#include <vector>

struct command_row;

struct cli_options {
    const command_row* command = nullptr; ///< null: none was named
    bool json = false;
    bool verbose = false;
    bool quiet = false;

    std::string model{};
    std::string profile{}; ///< a file
    std::string other{};   ///< a second file, or a port
    std::string port{};
    std::string out{};                   ///< a file; empty or "-": standard output
    std::vector<std::string> settings{}; ///< KEY=VALUE
    std::string note{};
    export_form form = export_form::frames;
    bool alternative = false; ///< frames that start with AC (B)
    bool check = false;
    bool dry_run = false;

    // Bit timing, as typed.
    std::string clock = "200M";
    std::string nominal{};
    std::string data{};
    std::string sample{};
    bool all = false;

    // Many modules.
    std::vector<std::string> ports{};
    std::string journal{}; ///< a file
    bool wait = false;     ///< again for every module that is plugged in

    // Traffic.
    std::string frame{}; ///< "123#1122"
    std::string every = "0ms";
    bool candump = false;
    int64_t seconds = 0; ///< 0: until it is interrupted
    int64_t count = 1;
    int64_t channel = 1; ///< from 1
};
