// The COM-port functions over termios and poll. Only com_port.cpp calls them: everybody else goes through com::,
// where the fault switch is. Meaning and errors are com_port.h's.
#pragma once

#include "platform/posix/com_port_system.h"

HANDLE CreateFileA(const char* path, DWORD access, DWORD share, void* security, DWORD disposition, DWORD flags,
                   HANDLE model);
BOOL SetupComm(HANDLE port, DWORD in_queue, DWORD out_queue);
BOOL SetCommState(HANDLE port, DCB* state);
BOOL SetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts);
BOOL GetCommTimeouts(HANDLE port, COMMTIMEOUTS* timeouts);
BOOL PurgeComm(HANDLE port, DWORD flags);
BOOL ClearCommError(HANDLE port, DWORD* errors, COMSTAT* status);
BOOL ReadFile(HANDLE port, void* bytes, DWORD size, DWORD* done, OVERLAPPED* operation);
BOOL WriteFile(HANDLE port, const void* bytes, DWORD size, DWORD* done, OVERLAPPED* operation);
BOOL GetOverlappedResult(HANDLE port, OVERLAPPED* operation, DWORD* done, BOOL wait);
BOOL CancelIoEx(HANDLE port, OVERLAPPED* operation);
HANDLE CreateEventA(void* security, BOOL manual_reset, BOOL initial_state, const char* name);
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);
DWORD WaitForSingleObject(HANDLE object, DWORD ms);
BOOL CloseHandle(HANDLE handle);
DWORD GetLastError();
void SetLastError(DWORD error);
DWORD QueryDosDeviceA(const char* device, char* target, DWORD max);
