// Shows the configuration window in the states that are worth a look; make_screenshots.sh makes the pictures.
#include <cstdlib>
#include <fstream>

#include "config/config_window_driver.h"
#include "ui/device_context.h"

namespace {

void WriteBitmap(const std::filesystem::path& path, HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    const int width = area.right - area.left;
    const int height = area.bottom - area.top;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HDC screen = GetWindowDC(window);
    const TBitmap bitmap(CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    {
        const TMemoryContext memory(screen);
        const TSelection selection(memory.Get(), bitmap.Get());
        BitBlt(memory.Get(), 0, 0, width, height, screen, 0, 0, SRCCOPY);
        GdiFlush();
    }
    ReleaseDC(window, screen);
    const auto size = static_cast<DWORD>(width) * static_cast<DWORD>(height) * 4;
    BITMAPFILEHEADER header{};
    header.bfType = 0x4D42;  // "BM"
    header.bfOffBits = sizeof(header) + sizeof(info.bmiHeader);
    header.bfSize = header.bfOffBits + size;
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(&header), sizeof(header));
    file.write(reinterpret_cast<const char*>(&info.bmiHeader), sizeof(info.bmiHeader));
    file.write(static_cast<const char*>(bits), size);
}

// The environment variable VARDEKO_SCREENSHOTS names the folder for the bitmaps.
class TConfigScreenshots : public TConfigWindowDriver {
protected:
    static void SetUpTestSuite() { SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE); }

    void Present(const std::string& state) {
        ProcessPendingMessages();
        UpdateWindow(window.Handle());
        const int scale = static_cast<int>(GetDpiForWindow(window.Handle())) * 100 / 96;
        WriteBitmap(std::filesystem::path(std::getenv("VARDEKO_SCREENSHOTS")) /
                        ("config-" + state + "-" + std::to_string(scale) + ".bmp"),
                    window.Handle());
    }
};

TEST_F(TConfigScreenshots, DISABLED_Present) {
    ASSERT_NE(std::getenv("VARDEKO_SCREENSHOTS"), nullptr);
    const std::wstring documents = L".pdf,.docx,.xlsx,.jpg";
    table.Assign({
        {true, L"C:\\Users\\Petra\\Documents", true, documents, L"NO", true, false},
        {true, L"C:\\Users\\Petra\\Pictures", true, L".jpg,.raw", L"IN", false, false},
        {true, L"C:\\Users\\Petra\\Documents\\Verein\\Mitgliederverwaltung\\Rechnungen 2024 und älter", true,
         L"", L"NO", true, false},
        {false, L"D:\\Projekte", true, L".tmp,.bak,.obj", L"EX", false, true},
        {true, L"D:\\Musik", true, L"", L"NO", false, false},
        {true, L"D:\\Ein_Ordner_mit_einem_sehr_langen_Namen_ohne_eine_einzige_Trennstelle", true, L"", L"NO",
         false, false},
        {true, L"E:\\Videos\\Urlaub", true, L".mp4", L"IN", false, false},
        {true, L"E:\\Post", false, L"", L"NO", true, true},
        {true, L"\\\\buero\\daten\\Angebote", true, documents, L"IN", true, false},
        {false, L"F:\\", true, L"", L"NO", false, false},
    });
    table.SetModified(false);
    Open();
    window.EdBackupPath.SetText(L"\\\\nas\\sicherung");
    window.cxCheckBox1.SetChecked(true);
    window.cxTextEdit1.SetText(L"petra");
    window.cxTextEdit2.SetText(L"geheim");
    FocusCell(1, kAktive);
    Present("table");
    FocusCell(2, kDirectory);
    Press(VK_F2);
    Present("folder");
    Press(VK_ESCAPE);
    FocusCell(0, kExtensions);
    Press(VK_F2);
    Present("types");
    Press(VK_ESCAPE);
    FocusCell(3, kMode);
    Press(VK_F2);
    Present("mode");
    Press(VK_ESCAPE);
    UseTheme(HighContrastTheme({.window = {0, 0, 0},
                                .windowText = {255, 255, 255},
                                .selection = {26, 235, 255},
                                .selectionText = {0, 0, 0},
                                .disabledText = {63, 242, 63}}));
    FocusCell(1, kDirectory);
    RedrawWindow(window.Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
    Present("contrast");
    UseTheme(TTheme());
}

}  // namespace
