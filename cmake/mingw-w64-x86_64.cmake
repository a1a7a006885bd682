# Cross build for 64-bit Windows with Debian's MinGW-w64 (POSIX threads flavour),
# tests run under Wine through scripts/wine-run.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(QRN_MINGW_TRIPLE x86_64-w64-mingw32)
# The posix flavour, because std::thread and std::mutex need it.
set(CMAKE_C_COMPILER ${QRN_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${QRN_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${QRN_MINGW_TRIPLE}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${QRN_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# -static picks the archives of libgcc, libstdc++ and winpthread, so that executables and DLLs
# import only Windows' own DLLs and each other; system libraries stay import libraries.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run)
