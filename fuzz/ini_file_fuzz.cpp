// The settings file: what is not changed stays as it is, and a value that was set is read again.
#include "fuzz_input.h"
#include "store/ini_file.h"
#include "support/latin1_code_page.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TLatin1CodePage codePage;
    const std::string_view bytes = AsBytes(data, size);
    TIniFile file(bytes, codePage);
    Require(file.Bytes(codePage) == bytes || bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"));
    const auto user = file.Text(L"config", L"USER");
    file.SetText(L"CONFIG", L"NASDIR", L"D:\\\u4E2D\u6587");
    file.SetBoolean(L"CONFIG", L"CONNECT", true);
    const TIniFile again(file.Bytes(codePage), codePage);
    Require(again.Text(L"CONFIG", L"nasdir") == L"D:\\\u4E2D\u6587");
    Require(again.Boolean(L"Config", L"Connect", false));
    Require(again.Text(L"CONFIG", L"USER") == user);
    return 0;
}
