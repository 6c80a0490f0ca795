# 64-bit Windows from Debian: the mingw-w64 cross compiler, and the libraries that cmake/windows-libraries builds for it.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(cross x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${cross}-gcc-posix)
set(CMAKE_CXX_COMPILER ${cross}-g++-posix)
set(CMAKE_RC_COMPILER ${cross}-windres)

# This compiler takes a stack of 16 bytes' alignment for one of 32, which a vector wants: no moves that trap when it is not.
set(CMAKE_C_FLAGS_INIT -Wa,-muse-unaligned-vector-move)
set(CMAKE_CXX_FLAGS_INIT -Wa,-muse-unaligned-vector-move)

# The compiler's runtime and its threads become part of what is built, so that it loads on a bare machine.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)

# Libraries and headers come from there alone, programs from this machine.
set(libraries "${CMAKE_CURRENT_LIST_DIR}/../build/windows-libraries/installed")
set(CMAKE_FIND_ROOT_PATH "${libraries}" /usr/${cross})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${libraries}/lib/pkgconfig")

# Tests run under Wine, with a folder of its own and without a display; without Wine they fail.
set(CMAKE_CROSSCOMPILING_EMULATOR env "WINEPREFIX=${CMAKE_CURRENT_LIST_DIR}/../build/wine" WINEDEBUG=-all
  LC_ALL=C.UTF-8 WINEDLLOVERRIDES=mscoree,mshtml= DISPLAY= wine)
