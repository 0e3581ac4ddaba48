# Toolchain file: Debian's mingw-w64, posix threads flavour, for x86-64 Windows.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(_tc x86_64-w64-mingw32)
set(CMAKE_C_COMPILER   /usr/bin/${_tc}-gcc-posix)
set(CMAKE_CXX_COMPILER /usr/bin/${_tc}-g++-posix)
set(CMAKE_RC_COMPILER  /usr/bin/${_tc}-windres)
set(CMAKE_AR           /usr/bin/${_tc}-gcc-ar-posix CACHE FILEPATH "")
set(CMAKE_RANLIB       /usr/bin/${_tc}-gcc-ranlib-posix CACHE FILEPATH "")
set(CMAKE_FIND_ROOT_PATH /usr/${_tc})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "/nonexistent")
# One self-contained .exe: libgcc, libstdc++ and winpthread linked in.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# The static Qt for Windows, given as -DQTWIN_PREFIX or in the environment. Its tools are the host's own of the same
# version.
if(NOT DEFINED QTWIN_PREFIX AND DEFINED ENV{QTWIN_PREFIX})
    set(QTWIN_PREFIX $ENV{QTWIN_PREFIX})
endif()
if(QTWIN_PREFIX)
    list(APPEND CMAKE_FIND_ROOT_PATH ${QTWIN_PREFIX})
    list(APPEND CMAKE_PREFIX_PATH ${QTWIN_PREFIX})
    set(QT_HOST_PATH /usr)
    set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QTWIN_PREFIX)

# Wine runs what was built, so that ctest works; packaging/windows/wine-tests.sh prepares it.
if(NOT DEFINED CMAKE_CROSSCOMPILING_EMULATOR)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../packaging/windows/wine-program.sh)
endif()
