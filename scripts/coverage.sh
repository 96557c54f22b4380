#!/bin/bash
# Prints how many lines and branches of the portable code the native tests reach, file by file; what only
# runs on Windows is not counted. Installs gcovr when it is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/packages.sh test gcovr
cmake -S . -B build/coverage -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVARDEKO_TESTS=ON \
    -DCMAKE_CXX_FLAGS='--coverage -fprofile-update=atomic' >build/coverage.log
cmake --build build/coverage >>build/coverage.log
find build/coverage -name '*.gcda' -delete
for program in build/coverage/bin/*_test; do
    "$program" --gtest_brief=1 >>build/coverage.log
done
gcovr --root . --filter 'src/' --exclude-throw-branches build/coverage "$@"
