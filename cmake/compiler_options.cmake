# What every target is compiled with: the language, the warnings, and the checks of the test builds.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

add_library(vardeko_options INTERFACE)
target_compile_options(vardeko_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # For GCC this is no part of -Wconversion in C++.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)
configure_file(${CMAKE_SOURCE_DIR}/src/support/version_numbers.h.in
  ${CMAKE_BINARY_DIR}/generated/support/version_numbers.h @ONLY)
target_include_directories(vardeko_options INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_BINARY_DIR}/generated)

if(WIN32)
  # Windows 10 is the oldest system supported; STRICT keeps the handle types apart.
  target_compile_definitions(vardeko_options INTERFACE
    UNICODE _UNICODE STRICT NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00 NTDDI_VERSION=0x0A000006)
  # One file, nothing beside it; and the same one wherever and whenever it is built, so that everybody can see
  # that it was built from these sources.
  target_link_options(vardeko_options INTERFACE -static -municode -Wl,--no-insert-timestamp)
  target_compile_options(vardeko_options INTERFACE
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
endif()

if(VARDEKO_CHECKED)
  # Traps need no sanitizer run-time, which the cross compiler does not have.
  target_compile_options(vardeko_options INTERFACE
    -O1 -fsanitize=undefined -fsanitize-undefined-trap-on-error)
  target_compile_definitions(vardeko_options INTERFACE _GLIBCXX_ASSERTIONS)
endif()

if(VARDEKO_SANITIZE)
  target_compile_options(vardeko_options INTERFACE
    -O1 -fno-omit-frame-pointer -fsanitize=${VARDEKO_SANITIZE} -fno-sanitize-recover=all)
  target_compile_definitions(vardeko_options INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(vardeko_options INTERFACE -fsanitize=${VARDEKO_SANITIZE})
endif()
