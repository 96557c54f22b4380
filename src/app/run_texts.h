// The texts the shell itself puts together.
#pragma once

#include <string>
#include <string_view>

// "Das Backup benötigte 1,50 min", with the given decimal separator.
std::wstring TimeTakenText(double minutes, std::wstring_view decimalSeparator);

// Asked before the hash table is rebuilt; the line break is meant to be in this order.
inline constexpr wchar_t kReindexQuestion[] =
    L"Diese Funktion wird nur benötigt um einen neuen Index eines bestehenden NAS Backups früherer "
    L"Versionen zu erstellen.\n\rWeitere Informationen finden Sie im Forum unter Vardeko ReIndex";
