#include "texts/problem_text.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

namespace {

std::wstring SystemText(TErrorCode code) {
    return L"Systemtext " + std::to_wstring(code);
}

std::wstring Text(const TProblem& problem) {
    return ProblemText(problem, &SystemText);
}

TEST(ProblemText, NamesWhatThePartiesNeedToAct) {
    EXPECT_EQ(Text({.what = TProblemKind::FileNotRead, .path = L"C:\\a", .code = 5}),
              L"Die Datei \"C:\\a\" kann nicht gelesen werden: Systemtext 5");
    EXPECT_EQ(Text({.what = TProblemKind::TableDamaged, .path = L"C:\\a", .number = 7, .limit = 9}),
              L"Die Datei \"C:\\a\" kann nicht gelesen werden: Sie ist beschädigt (bei Byte 7 von 9).");
    EXPECT_EQ(Text({.what = TProblemKind::TooManyRecords, .path = L"C:\\a"}),
              L"Die Datei \"C:\\a\" kann nicht gelesen werden: Die Tabelle hat zu viele Einträge.");
    EXPECT_EQ(Text({.what = TProblemKind::TextTooLong, .number = 300, .limit = 255, .detail = L"Directory"}),
              L"\"Ordner\" darf höchstens 255 Zeichen lang sein (eingegeben: 300).");
    EXPECT_EQ(Text({.what = TProblemKind::PasswordNotDecrypted, .path = L"C:\\a", .detail = L"why!"}),
              L"Das Passwort in \"C:\\a\" kann nicht entschlüsselt werden: why!");
    EXPECT_EQ(Text({.what = TProblemKind::SettingsNotSaved, .path = L"C:\\a", .code = 5}),
              L"Die Einstellungen in „C:\\a“ konnten nicht gespeichert werden: Systemtext 5.");
    EXPECT_EQ(Text({.what = TProblemKind::CredentialsUnknown}),
              L"Anmeldename und Passwort können nicht entschlüsselt werden. Was gespeichert ist, bleibt "
              L"erhalten, bis hier etwas Neues eingegeben wird.");
    EXPECT_EQ(Text({.what = TProblemKind::DestinationLost, .path = L"N:\\PC", .number = 3}),
              L"Das Ziel ist nicht mehr erreichbar: N:\\PC (noch 3 Dateien zu kopieren)");
    EXPECT_EQ(Text({.what = TProblemKind::SourceFolderLost, .path = L"E:\\Fotos", .code = 3}),
              L"Der Quellordner ist während des Laufs verschwunden: E:\\Fotos (Systemtext 3)");
    EXPECT_EQ(Text({.what = TProblemKind::DestinationMissing, .path = L"N:"}),
              L"Error: Destination Directory does not exist, N:");
}

TEST(ProblemText, AnExceptionWithoutAProblemKeepsItsWords) {
    EXPECT_EQ(Text(ProblemOf(std::runtime_error("geht nicht: ü"))), L"geht nicht: ü");
    const TProblem problem{.what = TProblemKind::ScanBroken, .detail = L"Grund"};
    EXPECT_EQ(ProblemOf(EProblem(problem)), problem);
}

}  // namespace
