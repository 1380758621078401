# Programs for 64-bit Windows, made on Debian by its own mingw-w64 with POSIX threads.
# QUILLON_WINDOWS_PREFIX (environment or -D) is the folder into which prefix.sh has put Qt and SQLite.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(machine x86_64-w64-mingw32)
set(CMAKE_C_COMPILER "/usr/bin/${machine}-gcc-posix")
set(CMAKE_CXX_COMPILER "/usr/bin/${machine}-g++-posix")
set(CMAKE_RC_COMPILER "/usr/bin/${machine}-windres")
set(CMAKE_AR "/usr/bin/${machine}-gcc-ar-posix" CACHE FILEPATH "")
set(CMAKE_RANLIB "/usr/bin/${machine}-gcc-ranlib-posix" CACHE FILEPATH "")

if(NOT QUILLON_WINDOWS_PREFIX)
  set(QUILLON_WINDOWS_PREFIX "$ENV{QUILLON_WINDOWS_PREFIX}")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUILLON_WINDOWS_PREFIX)

# What is linked comes from there and never from this computer's own /usr; what is run comes from this computer.
set(CMAKE_FIND_ROOT_PATH "${QUILLON_WINDOWS_PREFIX}" "/usr/${machine}")
set(CMAKE_PREFIX_PATH "${QUILLON_WINDOWS_PREFIX}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(QT_HOST_PATH "/usr" CACHE PATH "")
# Debian's folder for its own machine's kind; without it Qt's host tools are not found.
set(QT_HOST_PATH_CMAKE_DIR "/usr/lib/x86_64-linux-gnu/cmake" CACHE PATH "")

# The toolkit's Japanese texts are the same for every system.
set(QUILLON_TRANSLATIONS "/usr/share/qt6/translations" CACHE PATH "")

# A program is one file: nothing of the compiler lies beside it.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++")

# What CMake or ctest runs of all this runs under wine.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/wine.sh")
