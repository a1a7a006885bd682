#include "qrnplatform/File.h"

#include <windows.h>

namespace qrnplatform {

namespace {

bool isSeparator(wchar_t c) {
    return c == L'\\' || c == L'/';
}

// Index where the parts that may need creating start: after "C:" or "\\server\share".
std::size_t rootLength(const std::wstring& path) {
    if (path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1])) {
        std::size_t separators = 0;
        for (std::size_t i = 2; i < path.size(); ++i) {
            if (isSeparator(path[i]) && ++separators == 2)
                return i;
        }
        return path.size();
    }
    if (path.size() >= 2 && path[1] == L':')
        return 2;
    return 0;
}

} // namespace

std::FILE* File::open(const std::wstring& path, const char* mode) {
    const std::wstring wideMode(mode, mode + std::char_traits<char>::length(mode));
    return ::_wfopen(path.c_str(), wideMode.c_str());
}

bool File::exists(const std::wstring& path) {
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool File::isDirectory(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool File::makeDirectories(const std::wstring& path) {
    if (path.empty())
        return false;
    const std::size_t root = rootLength(path);
    for (std::size_t i = root + 1; i < path.size(); ++i) {
        if (!isSeparator(path[i]) || isSeparator(path[i - 1]))
            continue;
        const std::wstring prefix = path.substr(0, i);
        if (!::CreateDirectoryW(prefix.c_str(), nullptr) && !isDirectory(prefix))
            return false;
    }
    ::CreateDirectoryW(path.c_str(), nullptr);
    return isDirectory(path);
}

} // namespace qrnplatform
