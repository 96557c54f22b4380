#include "ui/marks.h"

namespace {

// In the units of the canvas: 1.5 of them are a pixel at 100 %.
constexpr double kPixel = 1.5;

void DrawBox(TIconCanvas& canvas, TColour edge, TColour ground) {
    canvas.RoundedBox({kPixel, kPixel}, {24 - kPixel, 24 - kPixel}, 3, edge);
    canvas.RoundedBox({2 * kPixel, 2 * kPixel}, {24 - 2 * kPixel, 24 - 2 * kPixel}, 2, ground);
}

void DrawRing(TIconCanvas& canvas, TColour edge) {
    canvas.Circle({12, 12}, 10.5, edge);
    canvas.Circle({12, 12}, 10.5 - kPixel, Theme::ControlGround);
}

}  // namespace

TIconCanvas DrawMark(TMark mark, int size) {
    TIconCanvas canvas(size);
    switch (mark) {
        case TMark::CheckOff:
            DrawBox(canvas, Theme::DimText, Theme::ControlGround);
            break;
        case TMark::CheckOn:
            DrawBox(canvas, Theme::Accent, Theme::Accent);
            canvas.Line({{6, 12}, {10.5, 16.5}, {18, 8}}, 3, Theme::ControlGround);
            break;
        case TMark::RadioOff:
            DrawRing(canvas, Theme::DimText);
            break;
        case TMark::RadioOn:
            DrawRing(canvas, Theme::Accent);
            canvas.Circle({12, 12}, 5, Theme::Accent);
            break;
        case TMark::CurrentRow:
            canvas.Polygon({{8, 5}, {16, 12}, {8, 19}}, Theme::Text);
            break;
        case TMark::EditedRow:
            canvas.Line({{7, 17}, {17, 7}}, 4, Theme::Accent);
            canvas.Line({{5, 19}, {6, 18}}, 1.5, Theme::Text);
            break;
        case TMark::Warning:
            canvas.Polygon({{12, 2}, {23, 21}, {1, 21}}, Theme::Warning);
            canvas.Line({{12, 9}, {12, 14}}, 2, Theme::ControlGround);
            canvas.Circle({12, 18}, 1.5, Theme::ControlGround);
            break;
    }
    return canvas;
}
