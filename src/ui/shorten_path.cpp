#include "ui/shorten_path.h"

#include <cstddef>

#include "support/path_text.h"
#include "support/utf16.h"

namespace {

constexpr wchar_t kEllipsis = 0x2026;

// The longest beginning of the text (at least `least` characters) with `rest` behind it that fits; nothing
// when not even the shortest does.
std::wstring LongestThatFits(std::wstring_view text, std::size_t least, const std::wstring& rest,
                             const TFits& fits) {
    const auto joined = [&](std::size_t length) { return std::wstring(BeginningOf(text, length)) + rest; };
    if (!fits(joined(least))) {
        return {};
    }
    std::size_t fitting = least;
    std::size_t tooLong = text.size();
    while (tooLong - fitting > 1) {
        const std::size_t middle = fitting + (tooLong - fitting) / 2;
        (fits(joined(middle)) ? fitting : tooLong) = middle;
    }
    return joined(fitting);
}

}  // namespace

std::wstring ShortenPath(std::wstring_view path, const TFits& fits) {
    if (fits(path)) {
        return std::wstring(path);
    }
    const std::wstring_view folder = FolderPart(path);
    const std::wstring_view drive = DrivePart(path);
    const std::wstring ellipsis(1, kEllipsis);
    if (folder.size() > drive.size() + 1) {
        const std::wstring name = ellipsis + L"\\" + std::wstring(FileNamePart(path));
        const std::size_t least = drive.empty() ? 0 : drive.size() + 1;
        if (std::wstring shortened = LongestThatFits(folder.substr(0, folder.size() - 1), least, name, fits);
            !shortened.empty()) {
            return shortened;
        }
        return LongestThatFits(name, 0, ellipsis, fits);
    }
    return LongestThatFits(path, 0, ellipsis, fits);
}
