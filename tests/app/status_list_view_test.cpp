#include "app/status_list_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <set>

#include "ui/device_context.h"
#include "ui/message_loop.h"
#include "ui/window_scale.h"

namespace {

// A window that holds nothing but the list.
class TListWindow final : public TWindow {
public:
    explicit TListWindow(const TStatusListModel& model) : view(model), font_(MakeMessageFont(TScale())) {
        TCreateOptions options;
        options.className = L"TListWindow";
        options.left = options.top = 0;
        options.width = 400;
        options.height = 300;
        if (!Create(options) || !view.CreateIn(Handle(), 1, TScale(), font_.Get())) {
            throw std::runtime_error("no window");
        }
        view.Place({0, 0, 380, 260});
    }
    ~TListWindow() override { Destroy(); }

    TStatusListView view;

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM, LPARAM longParameter) override {
        return message == WM_NOTIFY ? view.HandleNotification(*reinterpret_cast<NMHDR*>(longParameter))
                                    : std::nullopt;
    }

private:
    TFont font_;
};

class StatusListView : public testing::Test {
protected:
    void Add(int count, std::optional<int> status = kFileNameStatus) {
        for (int row = 0; row < count; ++row) {
            model_.InsertAtTop(L"row " + std::to_wstring(model_.RowCount()), status);
        }
    }
    void Show() {
        window_.view.ShowChanges();
        ProcessPendingMessages();
    }
    void Select(int row) {
        LVITEMW item{};
        item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(List(), LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    }
    HWND List() { return window_.view.Handle(); }
    RECT AreaOfRow(int row) {
        RECT area{};
        area.left = LVIR_BOUNDS;
        SendMessageW(List(), LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&area));
        return area;
    }
    int TopRow() { return static_cast<int>(SendMessageW(List(), LVM_GETTOPINDEX, 0, 0)); }
    std::wstring TextInControl(int row) {
        wchar_t text[100] = L"";
        LVITEMW item{};
        item.pszText = text;
        item.cchTextMax = 100;
        SendMessageW(List(), LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
        return text;
    }

    TStatusListModel model_;
    TListWindow window_{model_};
};

TEST_F(StatusListView, SelectedRowsStaySelectedWhenNewOnesComeInAbove) {
    Add(100);
    Show();
    for (const int row : {0, 5, 6, 7, 90}) {
        Select(row);
    }
    Add(2);
    Show();
    EXPECT_EQ(window_.view.SelectedRows(), (std::vector<std::size_t>{2, 7, 8, 9, 92}));
    Add(40);
    Show();
    EXPECT_EQ(window_.view.SelectedRows(), (std::vector<std::size_t>{42, 47, 48, 49, 132}));
    EXPECT_EQ(SendMessageW(List(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED), 132);
    EXPECT_EQ(TextInControl(132), L"row 9");

    window_.view.SelectAll();
    Add(1);
    Show();
    EXPECT_EQ(window_.view.SelectedRows().size(), 142U);
    EXPECT_EQ(window_.view.SelectedRows().front(), 1U);
}

TEST_F(StatusListView, FollowsTheNewestRowUnlessTheUserHasScrolledAway) {
    Add(200);
    Show();
    Add(50);
    Show();
    EXPECT_EQ(TopRow(), 0);
    Select(2);
    Add(300);
    Show();
    EXPECT_EQ(TopRow(), 300) << "the user looks at the row he has selected";
    Select(600);
    SendMessageW(List(), LVM_ENSUREVISIBLE, 400, FALSE);
    const int looked = TopRow();
    Add(7);
    Show();
    EXPECT_EQ(TopRow(), looked + 7);
    SendMessageW(List(), LVM_ENSUREVISIBLE, 100, FALSE);
    const int before = TopRow();
    ASSERT_GT(before, 0);
    const std::wstring text = TextInControl(before);
    Add(1);
    Show();
    Add(1000);
    Show();
    EXPECT_EQ(TopRow(), before + 1001);
    EXPECT_EQ(TextInControl(TopRow()), text);
}

TEST_F(StatusListView, ShowsNothingOfAListThatWasEmptiedAndFilledAgain) {
    Add(10);
    Show();
    Select(3);
    model_.Clear();
    EXPECT_EQ(TextInControl(3), L"") << "asked for between the change and its showing";
    Add(20);
    Show();
    EXPECT_EQ(SendMessageW(List(), LVM_GETITEMCOUNT, 0, 0), 20);
    EXPECT_TRUE(window_.view.SelectedRows().empty());
    EXPECT_EQ(TextInControl(0), L"row 19");
}

TEST_F(StatusListView, AddingCostsTheSameAmongAMillionRows) {
    // The least of many: a machine that is busy with other things holds up some of them.
    const auto secondsForSomeRows = [this] {
        double least = 1e9;
        for (int round = 0; round < 40; ++round) {
            const auto begin = std::chrono::steady_clock::now();
            Add(10);
            Show();
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
            least = std::min(least, taken.count());
        }
        return least;
    };
    Add(1000);
    Show();
    const double few = secondsForSomeRows();
    Add(1'000'000);
    Show();
    SendMessageW(List(), LVM_SCROLL, 0, 1'000'000);
    for (int row = 400'000; row < 400'100; ++row) {
        Select(row);
    }
    secondsForSomeRows();  // the first time the selection is read
    const double many = secondsForSomeRows();
    EXPECT_LT(many, few * 3 + 0.003);
    EXPECT_EQ(SendMessageW(List(), LVM_GETITEMCOUNT, 0, 0), static_cast<LRESULT>(model_.RowCount()));
}

TEST_F(StatusListView, PaintsEveryStatusInItsColour) {
    const struct {
        std::optional<int> status;
        TRowStyle style;
    } kCases[] = {{kInfoStatus, Theme().infoRow},      {kFileNameStatus, Theme().fileNameRow},
                  {kErrorStatus, Theme().errorRow},    {kIgnoreStatus, Theme().ignoreRow},
                  {std::nullopt, Theme().fileNameRow}, {7, Theme().fileNameRow}};
    for (const auto& example : kCases) {
        model_.InsertAtTop(L"\u2588\u2588", example.status);  // solid blocks
    }
    ShowWindow(window_.Handle(), SW_SHOW);
    Show();
    UpdateWindow(List());
    const HDC context = GetDC(List());
    for (int row = 0; row < 6; ++row) {
        const RECT area = AreaOfRow(row);
        const TRowStyle& style = kCases[5 - row].style;
        int textPixels = 0;
        int groundPixels = 0;
        for (int x = area.left; x < area.left + 60; ++x) {
            const COLORREF colour = GetPixel(context, x, (area.top + area.bottom) / 2);
            textPixels += colour == ColorRefOf(style.text) ? 1 : 0;
            groundPixels += colour == ColorRefOf(style.ground) ? 1 : 0;
        }
        EXPECT_GT(textPixels, 4) << row;
        EXPECT_GT(groundPixels, 1) << row;
    }
    ReleaseDC(List(), context);
}

TEST_F(StatusListView, MarksWhereErrorsAreBesideTheScrollBar) {
    Add(100'000);
    Add(1, kErrorStatus);
    Add(300'000);
    ShowWindow(window_.Handle(), SW_SHOW);
    Show();
    const HWND bar = FindWindowExW(window_.Handle(), nullptr, L"VardekoScrollBar", nullptr);
    UpdateWindow(bar);
    RECT track{};
    GetClientRect(bar, &track);
    std::vector<LONG> marked;
    const HDC context = GetDC(bar);
    for (LONG y = 0; y < track.bottom; ++y) {
        if (GetPixel(context, track.right - 2, y) == ColorRefOf(Theme().errorMark)) {
            marked.push_back(y);
        }
    }
    ReleaseDC(bar, context);
    ASSERT_EQ(marked.size(), 2U) << "one line for one row, and no more";
    EXPECT_NEAR(marked.front(), track.bottom * 3 / 4, 2);
}

TEST_F(StatusListView, NothingOfASelectionStaysBehind) {
    Add(3);
    ShowWindow(window_.Handle(), SW_SHOW);
    Show();
    const auto pixels = [this] {
        UpdateWindow(List());
        std::vector<COLORREF> colours;
        RECT client{};
        GetClientRect(List(), &client);
        const HDC context = GetDC(List());
        for (int y = 0; y < AreaOfRow(2).bottom + 2; ++y) {
            for (int x = 0; x < client.right; x += x == 40 ? client.right - 80 : 1) {
                colours.push_back(GetPixel(context, x, y));
            }
        }
        ReleaseDC(List(), context);
        return colours;
    };
    const std::vector<COLORREF> before = pixels();
    Select(1);
    EXPECT_NE(pixels(), before);
    LVITEMW item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(List(), LVM_SETITEMSTATE, 1, reinterpret_cast<LPARAM>(&item));
    EXPECT_EQ(pixels(), before);
}

TEST_F(StatusListView, HighContrastLeavesNoColourButTheSystems) {
    const TSystemColours colours{.window = {1, 1, 1},
                                 .windowText = {250, 250, 250},
                                 .selection = {0, 250, 0},
                                 .selectionText = {2, 2, 2},
                                 .disabledText = {0, 120, 120}};
    UseTheme(HighContrastTheme(colours));
    const TFont font = MakeMessageFont(TScale());
    window_.view.SetScale(TScale(), font.Get());
    for (const int status : {kInfoStatus, kFileNameStatus, kErrorStatus, kIgnoreStatus}) {
        model_.InsertAtTop(L"\u2588\u2588", status, L"\u2588");
    }
    ShowWindow(window_.Handle(), SW_SHOW);
    Show();
    Select(0);
    UpdateWindow(List());
    std::set<COLORREF> seen[4];
    const HDC context = GetDC(List());
    for (int row = 0; row < 4; ++row) {
        const RECT area = AreaOfRow(row);
        for (int x = 12; x < area.right; ++x) {
            seen[row].insert(GetPixel(context, x, (area.top + area.bottom) / 2));
        }
    }
    ReleaseDC(List(), context);
    UseTheme(TTheme());
    const COLORREF window = ColorRefOf(colours.window);
    const COLORREF text = ColorRefOf(colours.windowText);
    // Soft edges of letters are between two of them.
    const auto shows = [](const std::set<COLORREF>& shown, COLORREF first, COLORREF second) {
        return shown.contains(first) && shown.contains(second);
    };
    EXPECT_TRUE(shows(seen[0], ColorRefOf(colours.selection), ColorRefOf(colours.selectionText)));
    EXPECT_FALSE(seen[0].contains(text));
    for (int row = 1; row < 4; ++row) {
        EXPECT_TRUE(shows(seen[row], window, text)) << row;
        for (const COLORREF colour : seen[row]) {
            EXPECT_EQ(GetRValue(colour), GetGValue(colour)) << "as grey as black and white are";
            EXPECT_EQ(GetGValue(colour), GetBValue(colour));
        }
    }
}

TEST_F(StatusListView, ShowsTheReasonAlsoBehindATextThatIsTooLong) {
    model_.InsertAtTop(std::wstring(300, L'\u2588'), kErrorStatus, std::wstring(300, L'\u2588'));
    ShowWindow(window_.Handle(), SW_SHOW);
    Show();
    UpdateWindow(List());
    const RECT area = AreaOfRow(0);
    const HDC context = GetDC(List());
    int textPixels = 0;
    int reasonPixels = 0;
    for (int x = 0; x < area.right; ++x) {
        const COLORREF colour = GetPixel(context, x, (area.top + area.bottom) / 2);
        textPixels += colour == ColorRefOf(Theme().errorRow.text) ? 1 : 0;
        reasonPixels += colour == ColorRefOf(Theme().errorRow.reason) ? 1 : 0;
    }
    ReleaseDC(List(), context);
    EXPECT_GT(reasonPixels, area.right / 4);
    EXPECT_GT(textPixels, reasonPixels);
}

TEST_F(StatusListView, CopiesTheSelectedRows) {
    Add(4);
    model_.InsertAtTop(L"row 4", kErrorStatus, L"in Benutzung");
    Show();
    EXPECT_EQ(TextInControl(0), L"row 4: in Benutzung") << "what a screen reader says";
    Select(0);
    Select(3);
    window_.view.CopySelection();
    ASSERT_TRUE(OpenClipboard(window_.Handle()));
    const auto* text = static_cast<const wchar_t*>(GlobalLock(GetClipboardData(CF_UNICODETEXT)));
    EXPECT_STREQ(text, L"row 4\tin Benutzung\r\nrow 1\r\n");
    CloseClipboard();
}

}  // namespace
