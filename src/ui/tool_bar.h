// A row of buttons for actions.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/action.h"
#include "ui/drawn_control.h"
#include "ui/image_list.h"
#include "ui/tool_tips.h"

struct TToolBarItem {
    TAction* action = nullptr;  // a separator, when there is none
    bool showCaption = false;
    // Gets the focus when the action is disabled that has it.
    TAction* replacement = nullptr;
};

// Shows actions as buttons: real ones, so that the Tab key, the space bar and screen readers know them, drawn
// in the dark look. The mouse gives them no focus.
class TToolBar final : public TDrawnControl {
public:
    // Height at a scale of 100 %.
    static constexpr int kHeight = 44;

    // Creates the bar. Hidden actions get no button.
    [[nodiscard]] bool CreateIn(HWND parent, const std::vector<TToolBarItem>& items, TScale scale,
                                HFONT font);
    // Places the buttons anew.
    void SetScale(TScale scale, HFONT font);

    // Gets the focus when an action is disabled that has it and no replacement can be used: a neighbour might
    // do harm by the key that was meant for the other one.
    void SetFocusFallback(HWND control) { focusFallback_ = control; }

    // The button of an action; null when it has none.
    HWND ButtonOf(const TAction& action) const;

protected:
    std::optional<LRESULT> HandleMessage(UINT message, WPARAM wordParameter, LPARAM longParameter) override;

private:
    struct TButton {
        TToolBarItem item;
        HWND handle = nullptr;
    };

    void CreateButton(TButton& button, int id);
    void PlaceButtons();
    int ButtonWidth(const TToolBarItem& item) const;
    void ActionChanged(const TButton& button);
    void GiveFocusAway(const TButton& button);
    void DrawButton(const DRAWITEMSTRUCT& draw);
    void Paint() override;
    const TButton* FindButton(HWND handle) const;

    std::vector<TButton> buttons_;
    TImages images_;
    TToolTips toolTips_;
    TScale scale_;
    HFONT font_ = nullptr;
    HWND focusFallback_ = nullptr;
};
