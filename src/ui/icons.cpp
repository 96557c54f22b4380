#include "ui/icons.h"

namespace {

constexpr double kLine = 1.8;

// The colours of one drawing.
struct TInk {
    TColour line;
    TColour accent;
    TColour stop;
    TColour warning;
};

TInk InkOf(TImageState state) {
    const TTheme& theme = Theme();
    if (state == TImageState::Disabled) {
        return {theme.disabledText, theme.disabledText, theme.disabledText, theme.disabledText};
    }
    return {theme.icon, theme.iconAccent, theme.iconStop, theme.iconWarning};
}

// A door and the way out of it.
void DrawClose(TIconCanvas& canvas, const TInk& ink) {
    canvas.Line({{13, 4}, {6, 4}, {4, 6}, {4, 18}, {6, 20}, {13, 20}}, kLine, ink.line);
    canvas.Line({{9, 12}, {20, 12}}, kLine, ink.accent);
    canvas.Line({{16, 8}, {20, 12}, {16, 16}}, kLine, ink.accent);
}

// A file on its way down into the box on the network, which has a light.
void DrawStartCopy(TIconCanvas& canvas, const TInk& ink) {
    canvas.Line({{4, 14}, {20, 14}, {20, 21}, {4, 21}, {4, 14}}, kLine, ink.line);
    canvas.Line({{7, 17.5}, {12, 17.5}}, kLine, ink.line);
    canvas.Circle({16.5, 17.5}, 1.4, ink.accent);
    canvas.Line({{12, 2}, {12, 10}}, kLine, ink.accent);
    canvas.Line({{8, 6.5}, {12, 10.5}, {16, 6.5}}, kLine, ink.accent);
}

void DrawStopCopy(TIconCanvas& canvas, const TInk& ink) {
    canvas.RoundedBox({5, 5}, {19, 19}, 2.5, ink.stop);
}

// Three sliders.
void DrawConfigure(TIconCanvas& canvas, const TInk& ink) {
    const auto slider = [&](double y, double knob) {
        canvas.Line({{3, y}, {21, y}}, kLine, ink.line);
        canvas.Circle({knob, y}, 3, ink.accent);
    };
    slider(5, 8);
    slider(12, 16);
    slider(19, 9);
}

// The sign of a switch.
void DrawPower(TIconCanvas& canvas, TColour arc, TColour line) {
    canvas.Arc({12, 13}, 8, -55, 235, kLine, arc);
    canvas.Line({{12, 3}, {12, 11}}, kLine, line);
}

// A turn all the way round.
void DrawReindex(TIconCanvas& canvas, const TInk& ink) {
    canvas.Arc({12, 12}, 8, 30, 300, kLine, ink.line);
    canvas.Line({{16, 2}, {16, 6}, {11, 6}}, kLine, ink.accent);
    canvas.Circle({12, 12}, 2.5, ink.accent);
}

// Something that comes down into a tray.
void DrawUpdate(TIconCanvas& canvas, const TInk& ink) {
    canvas.Line({{4, 16}, {4, 20}, {20, 20}, {20, 16}}, kLine, ink.line);
    canvas.Line({{12, 3}, {12, 15}}, kLine, ink.accent);
    canvas.Line({{7, 10}, {12, 15}, {17, 10}}, kLine, ink.accent);
}

// A folder to be added.
void DrawFolder(TIconCanvas& canvas, const TInk& ink) {
    canvas.Line({{3, 19}, {3, 5}, {9, 5}, {11, 8}, {21, 8}, {21, 19}, {3, 19}}, kLine, ink.line);
    canvas.Line({{12, 10.5}, {12, 16.5}}, kLine, ink.accent);
    canvas.Line({{9, 13.5}, {15, 13.5}}, kLine, ink.accent);
}

}  // namespace

TIconCanvas DrawImage(TImageIndex image, int size, TImageState state) {
    TIconCanvas canvas(size);
    const TInk ink = InkOf(state);
    switch (image) {
        case TImageIndex::Close:
            DrawClose(canvas, ink);
            break;
        case TImageIndex::StartCopy:
            DrawStartCopy(canvas, ink);
            break;
        case TImageIndex::StopCopy:
            DrawStopCopy(canvas, ink);
            break;
        case TImageIndex::Configure:
            DrawConfigure(canvas, ink);
            break;
        case TImageIndex::Reindex:
            DrawReindex(canvas, ink);
            break;
        case TImageIndex::Update:
            DrawUpdate(canvas, ink);
            break;
        case TImageIndex::ShutDownChecked:
            DrawPower(canvas, ink.warning, ink.warning);
            break;
        case TImageIndex::ShutDown:
            DrawPower(canvas, ink.line, ink.accent);
            break;
        case TImageIndex::Folder:
            DrawFolder(canvas, ink);
            break;
    }
    return canvas;
}
