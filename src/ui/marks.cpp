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
    canvas.Circle({12, 12}, 10.5 - kPixel, Theme().controlGround);
}

}  // namespace

TIconCanvas DrawMark(TMark mark, int size) {
    TIconCanvas canvas(size);
    switch (mark) {
        case TMark::CheckOff:
            DrawBox(canvas, Theme().dimText, Theme().controlGround);
            break;
        case TMark::CheckOn:
            DrawBox(canvas, Theme().mark, Theme().mark);
            canvas.Line({{6, 12}, {10.5, 16.5}, {18, 8}}, 3, Theme().controlGround);
            break;
        case TMark::RadioOff:
            DrawRing(canvas, Theme().dimText);
            break;
        case TMark::RadioOn:
            DrawRing(canvas, Theme().mark);
            canvas.Circle({12, 12}, 5, Theme().mark);
            break;
        case TMark::CurrentRow:
            canvas.Polygon({{8, 5}, {16, 12}, {8, 19}}, Theme().text);
            break;
        case TMark::EditedRow:
            canvas.Line({{7, 17}, {17, 7}}, 4, Theme().mark);
            canvas.Line({{5, 19}, {6, 18}}, 1.5, Theme().text);
            break;
        case TMark::Warning:
            canvas.Polygon({{12, 2}, {23, 21}, {1, 21}}, Theme().warning);
            canvas.Line({{12, 9}, {12, 14}}, 2, Theme().controlGround);
            canvas.Circle({12, 18}, 1.5, Theme().controlGround);
            break;
    }
    return canvas;
}
