// Numbers of the program's resources.
#pragma once

#define IDI_VARDEKO 1
