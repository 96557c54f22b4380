#include "config/folder_picker.h"

#include <shlobj.h>
#include <shobjidl.h>

#include <memory>
#include <system_error>

#include "support/com_use.h"

namespace {

struct TRelease {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename Interface>
using TComPointer = std::unique_ptr<Interface, TRelease>;

void Check(HRESULT result) {
    if (FAILED(result)) {
        throw std::system_error(static_cast<int>(result), std::system_category(), "IFileOpenDialog");
    }
}

TComPointer<IShellItem> StartItem(const std::wstring& folder) {
    IShellItem* item = nullptr;
    if (!folder.empty() && SUCCEEDED(SHCreateItemFromParsingName(folder.c_str(), nullptr, IID_IShellItem,
                                                                 reinterpret_cast<void**>(&item)))) {
        return TComPointer<IShellItem>(item);
    }
    PIDLIST_ABSOLUTE drives = nullptr;
    if (SUCCEEDED(SHGetFolderLocation(nullptr, CSIDL_DRIVES, nullptr, 0, &drives))) {
        SHCreateItemFromIDList(drives, IID_IShellItem, reinterpret_cast<void**>(&item));
        CoTaskMemFree(drives);
    }
    return TComPointer<IShellItem>(item);
}

std::wstring FileSystemPath(IFileOpenDialog& dialog) {
    IShellItem* chosen = nullptr;
    Check(dialog.GetResult(&chosen));
    const TComPointer<IShellItem> item(chosen);
    wchar_t* name = nullptr;
    Check(item->GetDisplayName(SIGDN_FILESYSPATH, &name));
    const std::unique_ptr<wchar_t, decltype(&CoTaskMemFree)> path(name, &CoTaskMemFree);
    return path.get();
}

}  // namespace

std::optional<std::wstring> PickFolder(HWND owner, const std::wstring& title,
                                       const std::wstring& startFolder) {
    const TComUse com;
    IFileOpenDialog* created = nullptr;
    Check(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileOpenDialog,
                           reinterpret_cast<void**>(&created)));
    const TComPointer<IFileOpenDialog> dialog(created);
    FILEOPENDIALOGOPTIONS options = 0;
    Check(dialog->GetOptions(&options));
    Check(dialog->SetOptions(options | FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM | FOS_FORCESHOWHIDDEN |
                             FOS_NOCHANGEDIR));
    Check(dialog->SetTitle(title.c_str()));
    if (const TComPointer<IShellItem> start = StartItem(startFolder)) {
        dialog->SetFolder(start.get());
    }
    const HRESULT answer = dialog->Show(owner);
    if (answer == HRESULT_FROM_WIN32(ERROR_CANCELLED)) {
        return std::nullopt;
    }
    Check(answer);
    return FileSystemPath(*dialog);
}
