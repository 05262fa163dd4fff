# How everything is compiled: C++20 without extensions, hidden symbols, warnings as errors.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_library(media_accessor_options INTERFACE)
target_compile_features(media_accessor_options INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)
target_compile_options(media_accessor_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
  -Wold-style-cast -Wcast-qual -Woverloaded-virtual -Wundef)
# Results must not depend on the machine: no fused multiply-add in place of two roundings.
target_compile_options(media_accessor_options INTERFACE -ffp-contract=off)
if(MEDIA_ACCESSOR_SANITIZERS)
  # The runtime of fuzzer-no-link comes with each target's own -fsanitize=fuzzer.
  target_compile_options(media_accessor_options INTERFACE
    -fsanitize=${MEDIA_ACCESSOR_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(media_accessor_options INTERFACE -fsanitize=${MEDIA_ACCESSOR_SANITIZERS})
endif()
