# Cross build for Windows with MinGW-w64. What was built runs in Wine.
#     MEDIA_ACCESSOR_WINDOWS_PREFIX    the folder that scripts/build-windows-dependencies prints
if(NOT MEDIA_ACCESSOR_WINDOWS_PREFIX)
  message(FATAL_ERROR "MEDIA_ACCESSOR_WINDOWS_PREFIX is not set: see scripts/build-windows-dependencies")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MEDIA_ACCESSOR_WINDOWS_PREFIX)

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Libraries, headers and packages come from the prefix alone, programs from this machine.
set(CMAKE_FIND_ROOT_PATH "${MEDIA_ACCESSOR_WINDOWS_PREFIX}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${MEDIA_ACCESSOR_WINDOWS_PREFIX}/lib/pkgconfig")
unset(ENV{PKG_CONFIG_PATH})

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/run-in-wine")
