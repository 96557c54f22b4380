#include "support/platform_calls.h"

const TPlatformCalls& SystemPlatformCalls() {
    static const TPlatformCalls calls{
        .FindFirstFileExW = &::FindFirstFileExW,
        .FindNextFileW = &::FindNextFileW,
        .FindClose = &::FindClose,
        .GetFileAttributesExW = &::GetFileAttributesExW,
        .SetFileAttributesW = &::SetFileAttributesW,
        .CopyFileExW = &::CopyFileExW,
        .MoveFileW = &::MoveFileW,
        .MoveFileExW = &::MoveFileExW,
        .DeleteFileW = &::DeleteFileW,
        .CreateDirectoryW = &::CreateDirectoryW,
        .CreateFileW = &::CreateFileW,
        .ReadFile = &::ReadFile,
        .WriteFile = &::WriteFile,
        .SetFilePointerEx = &::SetFilePointerEx,
        .GetFileSizeEx = &::GetFileSizeEx,
        .GetFileInformationByHandle = &::GetFileInformationByHandle,
        .GetFinalPathNameByHandleW = &::GetFinalPathNameByHandleW,
        .FlushFileBuffers = &::FlushFileBuffers,
        .SetFileTime = &::SetFileTime,
        .CloseHandle = &::CloseHandle,
        .WNetAddConnection2W = &::WNetAddConnection2W,
        .WNetCancelConnection2W = &::WNetCancelConnection2W,
        .Sleep = &::Sleep,
        .GetTickCount64 = &::GetTickCount64,
        .CreateProcessW = &::CreateProcessW,
        .ShellExecuteW = &::ShellExecuteW,
        .OpenProcessToken = &::OpenProcessToken,
        .LookupPrivilegeValueW = &::LookupPrivilegeValueW,
        .AdjustTokenPrivileges = &::AdjustTokenPrivileges,
        .InitiateSystemShutdownW = &::InitiateSystemShutdownW,
        .SetThreadExecutionState = &::SetThreadExecutionState,
    };
    return calls;
}
