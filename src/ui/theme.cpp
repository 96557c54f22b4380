#include "ui/theme.h"

#include <initializer_list>

namespace {

TTheme& CurrentTheme() {
    static TTheme theme;
    return theme;
}

}  // namespace

TTheme HighContrastTheme(const TSystemColours& colours) {
    const TRowStyle row{colours.windowText, colours.windowText, colours.window};
    TTheme theme;
    theme.isHighContrast = true;
    for (TColour* ground :
         {&theme.windowGround, &theme.controlGround, &theme.headerGround, &theme.alternateGround,
          &theme.hover, &theme.pressed, &theme.checked, &theme.scrollTrack}) {
        *ground = colours.window;
    }
    for (TColour* shape :
         {&theme.text, &theme.dimText, &theme.border, &theme.controlBorder, &theme.mark, &theme.warning,
          &theme.errorMark, &theme.icon, &theme.iconAccent, &theme.iconStop}) {
        *shape = colours.windowText;
    }
    theme.disabledText = theme.scrollThumb = colours.disabledText;
    theme.accent = theme.scrollThumbHover = theme.iconWarning = colours.selection;
    theme.selection = theme.selectionIdle = colours.selection;
    theme.selectionText = theme.selectionFocus = colours.selectionText;
    theme.infoRow = theme.fileNameRow = theme.ignoreRow = row;
    // The other way round: told from the others without a colour.
    theme.errorRow = {colours.window, colours.window, colours.windowText};
    return theme;
}

const TTheme& Theme() {
    return CurrentTheme();
}

void UseTheme(const TTheme& theme) {
    CurrentTheme() = theme;
}
