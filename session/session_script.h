// A session as data: a list of steps, most of them exchanges (a request, and a reply that is checked). The
// families' folders hold such lists; session_run works through them.
#pragma once

#include "session/session_texts.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

class session_run;

/// The numbers are those of failures; those of progress are an exchange's own.
enum class session_kind : uint8_t { none = 0, connect = 1, write = 2, read = 3, mode_switch = 8 };

using session_bytes = std::vector<uint8_t>;

/// A progress report; without a text there is none.
struct session_report {
    uint32_t percent = 0;
    const char* text = nullptr;
    int operation = -1; ///< -1: the session's own code
};

/// What is wrong with a reply.
struct reply_fault {
    const char* message;
    std::string log;
    bool go_on = false; ///< the failure is reported, and the session goes on as if the reply were good
};

struct reply_check {
    session_report say{}; ///< before the check
    std::optional<reply_fault> (*fault_of)(const session_run&);
};

struct exchange {
    const io_texts* texts;
    session_report say{};               ///< before the write; with `times`, its percentage rises by one each time
    std::span<const uint8_t> request{}; ///< empty: what the session was given, one each time
    session_report say_reply{};         ///< between write and read
    uint32_t reply = 0;                 ///< bytes asked for; 0: no reply is read
    std::span<const reply_check> checks{};
    void (*accept)(session_run&) = nullptr; ///< a reply without any fault
    uint32_t times = 1;                     ///< session_run::index counts from 0
};

/// How a step ended. `failed`: the failure has been reported.
enum class step_end : uint8_t { good, failed, stopped };

/// Report, exchange, act: in this order, each if present.
struct session_step {
    session_report say{};
    const exchange* with = nullptr;
    step_end (*act)(session_run&) = nullptr;
};

struct session_script {
    const char* thread_name;
    session_kind kind;
    uint8_t report_operation;  ///< the code that this session's reports carry
    bool model_in_log = false; ///< log texts begin with the model's name
    std::span<const session_step> steps{};
};

/// The script of a kind, null when there is none.
constexpr const session_script* script_find(std::span<const session_script> scripts, session_kind kind) {
    for (const session_script& script : scripts)
        if (script.kind == kind) return &script;
    return nullptr;
}
