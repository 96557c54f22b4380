// A progress bar with room for the bytes of any file.
#pragma once

#include <windows.h>

#include "ui/drawn_control.h"

// Shows how far something is. The values are wider than those of the system's own control.
class TProgressBar final : public TDrawnControl {
public:
    [[nodiscard]] bool CreateIn(HWND parent);

    double Position() const { return position_; }
    double Maximum() const { return maximum_; }
    void SetPosition(double position);
    void SetMaximum(double maximum);

    // Position by maximum, from 0 to 1.
    double Fraction() const;

    // Brings what was set since the last call to the screen: a bar that changes by less than a pixel is not
    // drawn again.
    void ShowChanges();

private:
    int FilledPixels() const;
    void Paint() override;

    double position_ = 0;
    double maximum_ = 100;
    int shownPixels_ = 0;
};
