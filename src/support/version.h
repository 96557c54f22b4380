// The program's version.
#pragma once

// The build: a program with a higher one is newer.
int ProgramBuild();
// As people are told: "7.8".
const wchar_t* ProgramVersionText();
