// The port's side of a line, as the tool opens it.
#pragma once

#include "platform/com_port.h"

#include <chrono>
#include <cstdint>
#include <vector>

using bytes = std::vector<uint8_t>;

class port_end {
  public:
    explicit port_end(const char* name) {
        port_ = com::CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_OVERLAPPED, nullptr);
        error_ = is_open() ? 0 : com::GetLastError();
        if (!is_open()) return;
        DCB state{};
        state.DCBlength = sizeof state;
        state.BaudRate = 9600;
        state.fBinary = 1;
        state.ByteSize = 8;
        state.Parity = NOPARITY;
        state.StopBits = TWOSTOPBITS;
        com::SetCommState(port_, &state);
        com::PurgeComm(port_, PURGE_RXCLEAR | PURGE_TXCLEAR);
    }
    ~port_end() {
        if (is_open()) com::CloseHandle(port_);
    }
    port_end(const port_end&) = delete;
    port_end& operator=(const port_end&) = delete;

    bool is_open() const { return port_ != INVALID_HANDLE_VALUE; }
    DWORD error() const { return error_; }

    bool write(const bytes& content) {
        OVERLAPPED op{};
        op.hEvent = com::CreateEventA(nullptr, 1, 0, nullptr);
        DWORD done = 0;
        BOOL good = com::WriteFile(port_, content.data(), static_cast<DWORD>(content.size()), &done, &op);
        if (good == 0 && com::GetLastError() == ERROR_IO_PENDING)
            good = com::GetOverlappedResult(port_, &op, &done, 1);
        com::CloseHandle(op.hEvent);
        lost_ = good == 0;
        return good != 0 && done == content.size();
    }

    /// Up to `size` bytes: what came until `wait_ms` have passed with none at all, or `quiet_ms` after the last
    /// one.
    bytes read(std::size_t size, uint32_t wait_ms = 3000, uint32_t quiet_ms = 150) {
        COMMTIMEOUTS limits{};
        limits.ReadIntervalTimeout = quiet_ms;
        limits.ReadTotalTimeoutConstant = wait_ms;
        com::SetCommTimeouts(port_, &limits);
        bytes content(size);
        OVERLAPPED op{};
        op.hEvent = com::CreateEventA(nullptr, 1, 0, nullptr);
        DWORD done = 0;
        BOOL good = com::ReadFile(port_, content.data(), static_cast<DWORD>(size), &done, &op);
        error_ = good != 0 ? 0 : com::GetLastError();
        if (error_ == ERROR_IO_PENDING) {
            good = com::GetOverlappedResult(port_, &op, &done, 1);
            error_ = good != 0 ? 0 : com::GetLastError();
        }
        com::CloseHandle(op.hEvent);
        lost_ = good == 0 && error_ != ERROR_TIMEOUT;
        content.resize(good != 0 ? done : 0);
        return content;
    }
    /// Whether the last read or write found the port gone.
    bool lost() const { return lost_; }

    bytes ask(const bytes& request, std::size_t size, uint32_t wait_ms = 3000) {
        return write(request) ? read(size, wait_ms) : bytes();
    }

  private:
    HANDLE port_ = INVALID_HANDLE_VALUE;
    DWORD error_ = 0;
    bool lost_ = false;
};

/// Milliseconds since it was made.
class stopwatch {
  public:
    int64_t ms() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_)
            .count();
    }

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Joins byte strings.
inline bytes operator+(bytes left, const bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}
