// The update information: whatever the server sends, shown texts are bounded and names and addresses safe.
#include "fuzz_input.h"
#include "support/latin1_code_page.h"
#include "update/update_information.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TUpdateInformation information = ReadUpdateInformation(AsBytes(data, size), TLatin1CodePage());
    Require(information.version.size() <= kLargestShownText);
    Require(information.updateMessage.size() <= kLargestShownText);
    const std::wstring text = AsText(data, size);
    if (IsSafeSetupFileName(text)) {
        Require(text.find_first_of(L"\\/:") == std::wstring::npos && text.size() <= kLargestSetupFileName);
    }
    if (MayOpenPage(text)) {
        Require(text.size() > 7 && text.find_first_of(L" \t\r\n\"") == std::wstring::npos);
    }
    return 0;
}
