// How a read or a write of a port ended.
#pragma once

#include "platform/com_port.h"

#include <cstddef>
#include <cstdint>

/// Where an operation ended.
enum class io_step : uint8_t {
    done,
    create_event, ///< no event could be made
    start,        ///< ReadFile or WriteFile failed with another error than 997
    wait,         ///< the wait failed or took too long, or a read ended with no byte at all
    result,       ///< GetOverlappedResult failed, or a write stored less than it was given
    stopped,      ///< the calling worker was asked to stop, or the port is being closed
};

struct io_result {
    io_step step = io_step::done;
    DWORD error = 0; ///< the system's error code, 0 when there is none
    DWORD bytes = 0; ///< how many were moved
    bool ok() const { return step == io_step::done; }
};

inline constexpr std::size_t io_read_max = 256; ///< room for one drain round, or for any reply

/// True when `error` is one that systems answer once the device behind a port is gone.
bool port_lost_error(DWORD error);
