#include "port_fixture.h"

HANDLE open_path(const char* path, DWORD flags) {
    return com::CreateFileA(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, flags, nullptr);
}

void transfer::read(HANDLE port, DWORD size) {
    bytes.assign(size, 0xEE);
    record = {};
    record.hEvent = event.handle();
    error = com::ReadFile(port, bytes.data(), size, nullptr, &record) ? 0 : com::GetLastError();
}

void transfer::write(HANDLE port, bytes_t what) {
    bytes = std::move(what);
    record = {};
    record.hEvent = event.handle();
    const DWORD size = static_cast<DWORD>(bytes.size());
    error = com::WriteFile(port, bytes.data(), size, nullptr, &record) ? 0 : com::GetLastError();
}

DWORD transfer::finish(HANDLE port) {
    DWORD count = 0;
    if (error == ERROR_IO_PENDING) {
        if (event.wait() != WAIT_OBJECT_0) {
            ADD_FAILURE() << "the operation does not end";
            com::CancelIoEx(port, &record);
        }
        error = 0;
    }
    if (error == 0 && !com::GetOverlappedResult(port, &record, &count, TRUE)) error = com::GetLastError();
    if (count < bytes.size()) bytes.resize(count);
    return count;
}

bool says_lost(DWORD error) { return error == ERROR_BROKEN_PIPE || error == ERROR_NOT_READY; }

bool says_nothing_came(const transfer& t, DWORD count) {
    return count == 0 && (t.error == 0 || t.error == ERROR_TIMEOUT);
}

void port_test::SetUp() {
    com::fault_clear();
    std::string why;
    line = sim_line_open(port_name, &why);
    ASSERT_NE(line, nullptr) << why;
    port = open_path(port_path);
    ASSERT_NE(port, INVALID_HANDLE_VALUE) << com::GetLastError();
}

void port_test::TearDown() {
    com::fault_clear();
    com::resume_all();
    if (port != INVALID_HANDLE_VALUE) com::CloseHandle(port);
}

void port_test::set_timeouts(DWORD interval, DWORD multiplier, DWORD constant, DWORD write_multiplier,
                             DWORD write_constant) {
    COMMTIMEOUTS t = {interval, multiplier, constant, write_multiplier, write_constant};
    ASSERT_TRUE(com::SetCommTimeouts(port, &t)) << com::GetLastError();
}

bytes_t port_test::receive(std::size_t size) {
    bytes_t got(size);
    std::size_t count = 0;
    while (count < size) {
        const int n = line->read(got.data() + count, size - count, static_cast<int>(long_ms));
        if (n <= 0) break;
        count += static_cast<std::size_t>(n);
    }
    got.resize(count);
    return got;
}

DWORD port_test::in_queue() {
    DWORD errors = 0;
    COMSTAT status{};
    EXPECT_TRUE(com::ClearCommError(port, &errors, &status)) << com::GetLastError();
    return status.cbInQue;
}

bool port_test::wait_in_queue(DWORD size) {
    const owned_event never;
    for (const stopwatch watch; watch.ms() < long_ms;) {
        if (in_queue() == size) return true;
        never.wait(1);
    }
    return false;
}
