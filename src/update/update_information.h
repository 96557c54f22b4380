// What the maker's web server says about the newest version, and what of it may be acted on. The bytes come
// from the network: everything here treats them as hostile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/text.h"

// The information file's values. Texts hold no control characters and are cut to the lengths below; a number
// that is missing, malformed or out of range is 0.
struct TUpdateInformation {
    int build = 0;                // "Build"
    std::wstring version;         // "Version", shown
    std::wstring updateMessage;   // "UpdateMsg", shown
    std::wstring downLoadUrl;     // "Url": where the setup file is fetched
    std::wstring homepageUrl;     // "UpPage": if not empty, opened instead of a download
    std::wstring exMsgString;     // "ExMsg"
    int exDelay = 0;              // "ExInt": 0 lets the news page open by itself
    std::wstring newsUrl;         // "NewsUrl"
    int newsVersion = 0;          // "NewsVer"
    std::wstring setupFileName;   // "FileName"
    bool isSoftwareInfo = false;  // "SWInfo"
};

inline constexpr std::size_t kLargestShownText = 1000;     // characters of a text that is shown
inline constexpr std::size_t kLargestAddress = 2000;       // an address longer than this is dropped
inline constexpr std::size_t kLargestSetupFileName = 120;  // and so is a file name

// Reads the information file. Bytes that are no such file (a captive portal's page, say) give the defaults,
// build 0 included.
TUpdateInformation ReadUpdateInformation(std::string_view bytes, const TCodePage& codePage);

// The text as one line that is only shown: control characters and those that turn the reading direction
// become blanks, and what is longer than `limit` is cut and ends in an ellipsis.
std::wstring HarmlessText(std::wstring_view text, std::size_t limit);

// Whether the name is a bare file name of a program: letters, digits and " ._()+-" only, ending in ".exe",
// so that it can hold no path, no stream and no name that the system gives a device.
bool IsSafeSetupFileName(std::wstring_view name);

// Whether the system's default handler may be given the address: http:// or https:// with a host, and only
// characters that stand for themselves in an address, so that no handler's command line can be left.
bool MayOpenPage(std::wstring_view address);

// Whether a setup may be fetched from the address: the same, https:// only.
bool MayFetchSetup(std::wstring_view address);
