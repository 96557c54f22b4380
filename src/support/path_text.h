// The parts of a Windows path, as text: nothing here asks the file system.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The text without its last character if that is a "\"; only one is removed.
std::wstring_view RemoveTrailingSeparator(std::wstring_view path);

// The drive part: "X:" for a path with a drive letter, "\\server\share" for a network path, else empty.
std::wstring_view DrivePart(std::wstring_view path);

// Everything up to and including the last "\" or ":"; empty when there is neither.
std::wstring_view FolderPart(std::wstring_view path);

// Everything behind the folder part.
std::wstring_view FileNamePart(std::wstring_view path);

// The file name's part from its last "." on, dot included; empty when it has none.
std::wstring_view ExtensionPart(std::wstring_view path);

// The name under which an earlier copy is kept: "report.txt" and 1 give "report #001.txt".
// Numbers above 999 have more digits.
std::wstring NumberedName(std::wstring_view path, std::uint64_t number);

// Whether a file's name looks like one that NumberedName made.
bool IsNumberedName(std::wstring_view name);

// The form of an absolute path that file functions accept beyond 260 characters: "\\?\C:\..." or
// "\\?\UNC\server\share\...". That form is taken literally by the system, so "/" is turned into "\",
// doubled separators are joined and "." and ".." are resolved first; a bare drive "X:" means its root.
// A path that is relative, or already in this form, is returned as it is.
// See "Maximum Path Length Limitation" and "Naming Files, Paths, and Namespaces" in the Windows
// documentation.
std::wstring ExtendedPath(std::wstring_view path);
