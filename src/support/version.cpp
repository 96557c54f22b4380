#include "support/version.h"

#include "support/version_numbers.h"

int ProgramBuild() {
    return VARDEKO_BUILD;
}

const wchar_t* ProgramVersionText() {
    return L"" VARDEKO_VERSION;
}
