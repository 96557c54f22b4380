// The platform calls that a test must be able to fail, slow down, count or fake.
#pragma once

#include <windows.h>

#include <aclapi.h>
#include <shellapi.h>

// One function pointer per call, with the platform's own signature. Code that copies, lists or saves gets
// the table passed in; the program passes SystemPlatformCalls(), a test its own.
struct TPlatformCalls {
    // Files and folders.
    decltype(&::FindFirstFileExW) FindFirstFileExW;
    decltype(&::FindNextFileW) FindNextFileW;
    decltype(&::FindClose) FindClose;
    decltype(&::GetFileAttributesExW) GetFileAttributesExW;
    decltype(&::SetFileAttributesW) SetFileAttributesW;
    decltype(&::CopyFileExW) CopyFileExW;
    decltype(&::MoveFileW) MoveFileW;
    decltype(&::MoveFileExW) MoveFileExW;
    decltype(&::DeleteFileW) DeleteFileW;
    decltype(&::CreateDirectoryW) CreateDirectoryW;
    decltype(&::CreateFileW) CreateFileW;
    decltype(&::ReadFile) ReadFile;
    decltype(&::WriteFile) WriteFile;
    decltype(&::SetFilePointerEx) SetFilePointerEx;
    decltype(&::GetFileSizeEx) GetFileSizeEx;
    decltype(&::GetFileInformationByHandle) GetFileInformationByHandle;
    decltype(&::GetFinalPathNameByHandleW) GetFinalPathNameByHandleW;
    decltype(&::FlushFileBuffers) FlushFileBuffers;
    decltype(&::GetFileTime) GetFileTime;
    decltype(&::SetFileTime) SetFileTime;
    decltype(&::SetFileInformationByHandle) SetFileInformationByHandle;
    decltype(&::CloseHandle) CloseHandle;
    decltype(&::GetNamedSecurityInfoW) GetNamedSecurityInfoW;
    decltype(&::SetNamedSecurityInfoW) SetNamedSecurityInfoW;

    // Network connections.
    decltype(&::WNetAddConnection2W) WNetAddConnection2W;
    decltype(&::WNetCancelConnection2W) WNetCancelConnection2W;

    // Waiting for a file that somebody else holds for a moment, or for a destination.
    decltype(&::Sleep) Sleep;
    decltype(&::GetTickCount64) GetTickCount64;

    // Other programs.
    decltype(&::CreateProcessW) CreateProcessW;
    decltype(&::ShellExecuteW) ShellExecuteW;

    // Shutting the computer down, and keeping it awake.
    decltype(&::OpenProcessToken) OpenProcessToken;
    decltype(&::LookupPrivilegeValueW) LookupPrivilegeValueW;
    decltype(&::AdjustTokenPrivileges) AdjustTokenPrivileges;
    decltype(&::InitiateSystemShutdownW) InitiateSystemShutdownW;
    decltype(&::SetThreadExecutionState) SetThreadExecutionState;
    decltype(&::ShutdownBlockReasonCreate) ShutdownBlockReasonCreate;
    decltype(&::ShutdownBlockReasonDestroy) ShutdownBlockReasonDestroy;
};

// The table of the real functions.
const TPlatformCalls& SystemPlatformCalls();
