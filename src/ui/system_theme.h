// The palette that the system's settings ask for.
#pragma once

#include <windows.h>

// Takes the system's colours while high contrast is on, and the program's own otherwise.
void UseSystemTheme();

// Whether a message to a top-level window says that the user may have changed the colours. They are in use
// then, and the window makes again what it made of the former ones.
[[nodiscard]] bool BringsNewColours(UINT message, WPARAM wordParameter);
