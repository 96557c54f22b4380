#include "update/update_information.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "store/ini_file.h"
#include "support/utf16.h"

namespace {

constexpr std::wstring_view kSection = L"Vardeko 7.0";

bool IsControl(wchar_t letter) {
    return letter < L' ' || (letter >= 0x7F && letter <= 0x9F) || letter == 0x2028 || letter == 0x2029;
}

// Marks that turn the reading direction or that cannot be seen: they can make a shown name look like another.
bool IsInvisibleMark(wchar_t letter) {
    return (letter >= 0x200B && letter <= 0x200F) || (letter >= 0x202A && letter <= 0x202E) ||
           (letter >= 0x2060 && letter <= 0x206F) || letter == 0xFEFF;
}

bool IsAsciiLetterOrDigit(wchar_t letter) {
    return (letter >= L'0' && letter <= L'9') || (letter >= L'A' && letter <= L'Z') ||
           (letter >= L'a' && letter <= L'z');
}

bool StartsWithIgnoringCase(std::wstring_view text, std::wstring_view start) {
    return EqualsIgnoringAsciiCase(text.substr(0, start.size()), start);
}

int WholeNumber(std::wstring_view text) {
    std::string digits;
    for (const wchar_t letter : text) {
        digits += letter < 0x80 ? static_cast<char>(letter) : '?';
    }
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc() && end == digits.data() + digits.size() ? value : 0;
}

// An address or name that is too long is dropped, not cut: cut, it would be another one.
std::wstring DroppedIfLonger(std::wstring text, std::size_t limit) {
    if (text.size() > limit) {
        text.clear();
    }
    return text;
}

// Whether the name up to its first "." is one that the system gives a device, in every folder.
bool IsDeviceName(std::wstring_view name) {
    std::wstring stem = AsciiUpperCase(name.substr(0, name.find(L'.')));
    while (!stem.empty() && stem.back() == L' ') {
        stem.pop_back();
    }
    constexpr std::array<std::wstring_view, 4> kDevices{L"CON", L"PRN", L"AUX", L"NUL"};
    if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) {
        return true;
    }
    const bool isPort = stem.starts_with(L"COM") || stem.starts_with(L"LPT");
    return isPort && stem.size() == 4 && stem[3] >= L'0' && stem[3] <= L'9';
}

bool IsSafeAddress(std::wstring_view address, std::wstring_view scheme) {
    if (address.size() > kLargestAddress || !StartsWithIgnoringCase(address, scheme)) {
        return false;
    }
    const std::wstring_view rest = address.substr(scheme.size());
    constexpr std::wstring_view kSigns = L"-._~:/?#[]@!$&'()*+,;=%";
    const auto standsForItself = [kSigns](wchar_t letter) {
        return IsAsciiLetterOrDigit(letter) || kSigns.find(letter) != std::wstring_view::npos;
    };
    return !rest.empty() && (IsAsciiLetterOrDigit(rest.front()) || rest.front() == L'[') &&
           std::all_of(rest.begin(), rest.end(), standsForItself);
}

}  // namespace

TUpdateInformation ReadUpdateInformation(std::string_view bytes, const TCodePage& codePage) {
    const TIniFile file(bytes, codePage);
    const auto text = [&file](std::wstring_view key) { return file.Text(kSection, key).value_or(L""); };
    const auto number = [&text](std::wstring_view key) { return WholeNumber(text(key)); };
    const auto shown = [&text](std::wstring_view key) { return HarmlessText(text(key), kLargestShownText); };
    const auto address = [&text](std::wstring_view key) {
        return DroppedIfLonger(text(key), kLargestAddress);
    };

    TUpdateInformation information;
    information.build = number(L"Build");
    information.version = shown(L"Version");
    information.updateMessage = shown(L"UpdateMsg");
    information.downLoadUrl = address(L"Url");
    information.homepageUrl = address(L"UpPage");
    information.exMsgString = shown(L"ExMsg");
    information.exDelay = number(L"ExInt");
    information.newsUrl = address(L"NewsUrl");
    information.newsVersion = number(L"NewsVer");
    information.setupFileName = DroppedIfLonger(text(L"FileName"), kLargestSetupFileName);
    information.isSoftwareInfo = number(L"SWInfo") != 0;
    return information;
}

std::wstring HarmlessText(std::wstring_view text, std::size_t limit) {
    const bool isCut = text.size() > limit;
    std::wstring result(isCut ? BeginningOf(text, limit - 1) : text);
    std::replace_if(
        result.begin(), result.end(),
        [](wchar_t letter) { return IsControl(letter) || IsInvisibleMark(letter); }, L' ');
    if (isCut) {
        result += L'\x2026';
    }
    return result;
}

bool IsSafeSetupFileName(std::wstring_view name) {
    constexpr std::wstring_view kExtension = L".exe";
    constexpr std::wstring_view kSigns = L" ._()+-";
    if (name.size() <= kExtension.size() || name.size() > kLargestSetupFileName ||
        !EqualsIgnoringAsciiCase(name.substr(name.size() - kExtension.size()), kExtension)) {
        return false;
    }
    const auto isAllowed = [kSigns](wchar_t letter) {
        return IsAsciiLetterOrDigit(letter) || kSigns.find(letter) != std::wstring_view::npos;
    };
    return IsAsciiLetterOrDigit(name.front()) && std::all_of(name.begin(), name.end(), isAllowed) &&
           !IsDeviceName(name);
}

bool MayOpenPage(std::wstring_view address) {
    return IsSafeAddress(address, L"http://") || IsSafeAddress(address, L"https://");
}

bool MayFetchSetup(std::wstring_view address) {
    return IsSafeAddress(address, L"https://");
}
