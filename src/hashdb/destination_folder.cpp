#include "hashdb/destination_folder.h"

#include "support/path_text.h"

namespace {

// What stands behind "drive_": the letter, or server and share.
std::wstring DriveName(std::wstring_view drive) {
    if (drive.size() >= 2 && drive[1] == L':') {
        return std::wstring(drive.substr(0, 1));
    }
    std::wstring name(drive);
    if (const std::size_t slashes = name.find(L"\\\\"); slashes != std::wstring::npos) {
        name.erase(slashes, 2);
    }
    return name;
}

}  // namespace

std::wstring DestinationFolder(std::wstring_view nas, std::wstring_view host, std::wstring_view sourcePath) {
    const std::wstring_view drive = DrivePart(sourcePath);
    std::wstring_view rest = FolderPart(sourcePath);
    rest.remove_prefix(std::min(drive.size(), rest.size()));
    std::wstring result(nas);
    result += L'\\';
    result += host;
    result += L"\\drive_";
    result += DriveName(drive);
    result += rest;
    return result;
}

std::wstring DestinationOfFilesIn(std::wstring_view nas, std::wstring_view host,
                                  const std::wstring& sourceFolder) {
    return std::wstring(RemoveTrailingSeparator(DestinationFolder(nas, host, sourceFolder + L"\\")));
}
