// The settings file: a value that was set is read again, and a second look finds the same.
#include "config/ini_file.h"
#include "fuzz_input.h"
#include "support/latin1_code_page.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TLatin1CodePage codePage;
    TIniFile file(AsBytes(data, size), codePage);
    const auto user = file.Text(L"config", L"USER");
    file.SetText(L"CONFIG", L"NASDIR", L"D:\\\u4E2D\u6587");
    file.SetBoolean(L"CONFIG", L"CONNECT", true);
    const TIniFile again(file.Bytes(codePage), codePage);
    Require(again.Text(L"CONFIG", L"nasdir") == L"D:\\\u4E2D\u6587");
    Require(again.Boolean(L"Config", L"Connect", false));
    Require(again.Text(L"CONFIG", L"USER") == user);
    return 0;
}
