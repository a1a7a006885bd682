#pragma once

#include "qrnplatform/qrnplatform_export.h"

#include <cstdio>
#include <string>

namespace qrnplatform {

// Files by wide path, so that names outside the ANSI code page work on Windows too.
class QRNPLATFORM_EXPORT File {
public:
    File() = delete;

    // As std::fopen; nullptr on failure.
    static std::FILE* open(const std::wstring& path, const char* mode);
    static bool exists(const std::wstring& path);
    static bool isDirectory(const std::wstring& path);
    // Creates the folder and any missing parents; true when the folder exists afterwards.
    static bool makeDirectories(const std::wstring& path);
};

} // namespace qrnplatform
