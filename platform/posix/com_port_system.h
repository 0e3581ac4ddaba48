// The types and constants of the COM-port interface, with the names and values they have on Windows.
#pragma once

#include <cstdint>

using BOOL = int;
using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using ULONG_PTR = uintptr_t;
using HANDLE = void*;
using SECURITY_ATTRIBUTES = void; // never looked at

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<intptr_t>(-1)))

/// One overlapped operation. Internal and InternalHigh belong to the system from the call until it has completed.
struct OVERLAPPED {
    ULONG_PTR Internal;
    ULONG_PTR InternalHigh;
    DWORD Offset;
    DWORD OffsetHigh;
    HANDLE hEvent;
};

/// Line settings. Baud rate in bits per second; ByteSize 5 to 8; Parity and StopBits take the constants below.
struct DCB {
    DWORD DCBlength;
    DWORD BaudRate;
    DWORD fBinary : 1;
    DWORD fParity : 1;
    DWORD fOutxCtsFlow : 1;
    DWORD fOutxDsrFlow : 1;
    DWORD fDtrControl : 2;
    DWORD fDsrSensitivity : 1;
    DWORD fTXContinueOnXoff : 1;
    DWORD fOutX : 1;
    DWORD fInX : 1;
    DWORD fErrorChar : 1;
    DWORD fNull : 1;
    DWORD fRtsControl : 2;
    DWORD fAbortOnError : 1;
    DWORD fDummy2 : 17;
    WORD wReserved;
    WORD XonLim;
    WORD XoffLim;
    BYTE ByteSize;
    BYTE Parity;
    BYTE StopBits;
    char XonChar;
    char XoffChar;
    char ErrorChar;
    char EofChar;
    char EvtChar;
    WORD wReserved1;
};

/// Milliseconds; MAXDWORD in ReadIntervalTimeout selects the modes that return what is there.
struct COMMTIMEOUTS {
    DWORD ReadIntervalTimeout;
    DWORD ReadTotalTimeoutMultiplier;
    DWORD ReadTotalTimeoutConstant;
    DWORD WriteTotalTimeoutMultiplier;
    DWORD WriteTotalTimeoutConstant;
};

struct COMSTAT {
    DWORD fCtsHold : 1;
    DWORD fDsrHold : 1;
    DWORD fRlsdHold : 1;
    DWORD fXoffHold : 1;
    DWORD fXoffSent : 1;
    DWORD fEof : 1;
    DWORD fTxim : 1;
    DWORD fReserved : 25;
    DWORD cbInQue;
    DWORD cbOutQue;
};

constexpr DWORD MAXDWORD = 0xFFFFFFFF;
constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD FILE_FLAG_OVERLAPPED = 0x40000000;

constexpr DWORD PURGE_TXABORT = 1;
constexpr DWORD PURGE_RXABORT = 2;
constexpr DWORD PURGE_TXCLEAR = 4;
constexpr DWORD PURGE_RXCLEAR = 8;

constexpr BYTE NOPARITY = 0;
constexpr BYTE ODDPARITY = 1;
constexpr BYTE EVENPARITY = 2;
constexpr BYTE MARKPARITY = 3;
constexpr BYTE SPACEPARITY = 4;
constexpr BYTE ONESTOPBIT = 0;
constexpr BYTE ONE5STOPBITS = 1;
constexpr BYTE TWOSTOPBITS = 2;
constexpr DWORD DTR_CONTROL_DISABLE = 0;
constexpr DWORD DTR_CONTROL_ENABLE = 1;
constexpr DWORD DTR_CONTROL_HANDSHAKE = 2;
constexpr DWORD RTS_CONTROL_DISABLE = 0;
constexpr DWORD RTS_CONTROL_ENABLE = 1;
constexpr DWORD RTS_CONTROL_HANDSHAKE = 2;
constexpr DWORD RTS_CONTROL_TOGGLE = 3;

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_NOT_READY = 21;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_NOT_SUPPORTED = 50;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_BROKEN_PIPE = 109;
constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
constexpr DWORD ERROR_OPERATION_ABORTED = 995;
constexpr DWORD ERROR_IO_INCOMPLETE = 996;
constexpr DWORD ERROR_IO_PENDING = 997;
constexpr DWORD ERROR_NOACCESS = 998;
constexpr DWORD ERROR_NOT_FOUND = 1168;
constexpr DWORD ERROR_TIMEOUT = 1460;
