// Sizes at the scale of the monitor a window stands on. Sizes in the code are those of 96 dpi (100 %).
#pragma once

// Dots per inch of a scale of 100 %.
inline constexpr unsigned kStandardDpi = 96;

// Turns sizes of 100 % into device pixels of one scale, rounded to the nearest.
class TScale {
public:
    explicit constexpr TScale(unsigned dpi = kStandardDpi) : dpi_(dpi) {}

    constexpr unsigned Dpi() const { return dpi_; }
    constexpr int operator()(int size) const {
        const int doubled = size * static_cast<int>(dpi_) * 2;
        const int standard = static_cast<int>(kStandardDpi);
        return (doubled + (size < 0 ? -standard : standard)) / (2 * standard);
    }

private:
    unsigned dpi_;
};
