#include "ui/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "ui/device_context.h"

bool TProgressBar::CreateIn(HWND parent) {
    return CreateControl(parent, L"VardekoProgressBar");
}

void TProgressBar::SetPosition(double position) {
    position_ = position;
}

void TProgressBar::SetMaximum(double maximum) {
    maximum_ = maximum;
}

double TProgressBar::Fraction() const {
    return maximum_ > 0 ? std::clamp(position_ / maximum_, 0.0, 1.0) : 0.0;
}

int TProgressBar::FilledPixels() const {
    RECT area{};
    GetClientRect(Handle(), &area);
    return static_cast<int>(std::lround(Fraction() * (area.right - area.left)));
}

void TProgressBar::ShowChanges() {
    if (Exists() && FilledPixels() != shownPixels_) {
        // For screen readers; the text is not drawn.
        SetWindowTextW(Handle(), (std::to_wstring(std::lround(Fraction() * 100)) + L" %").c_str());
        Repaint();
    }
}

void TProgressBar::Paint() {
    const TPaintContext paint(Handle());
    shownPixels_ = FilledPixels();
    RECT filled = paint.Client();
    filled.right = filled.left + shownPixels_;
    FillArea(paint.Get(), paint.Client(), Theme().controlGround);
    FillArea(paint.Get(), filled, Theme().accent);
    FrameArea(paint.Get(), paint.Client(), Theme().border);
}
