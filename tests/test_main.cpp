#include <gmock/gmock.h>

#ifdef _WIN32
// The programs link with -municode, so the wide entry point is the one the run-time looks for.
extern "C" int wmain(int argc, wchar_t** argv) {
#else
int main(int argc, char** argv) {
#endif
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
