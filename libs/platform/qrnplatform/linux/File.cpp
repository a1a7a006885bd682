#include "qrnplatform/File.h"
#include "qrnplatform/Text.h"

#include <cerrno>
#include <sys/stat.h>

namespace qrnplatform {

namespace {

bool isDirectoryUtf8(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

std::FILE* File::open(const std::wstring& path, const char* mode) {
    return std::fopen(Text::toUtf8(path).c_str(), mode);
}

bool File::exists(const std::wstring& path) {
    struct stat info {};
    return ::stat(Text::toUtf8(path).c_str(), &info) == 0;
}

bool File::isDirectory(const std::wstring& path) {
    return isDirectoryUtf8(Text::toUtf8(path));
}

bool File::makeDirectories(const std::wstring& path) {
    const std::string target = Text::toUtf8(path);
    if (target.empty())
        return false;
    for (std::size_t pos = target.find('/', 1); pos != std::string::npos;
         pos = target.find('/', pos + 1)) {
        const std::string prefix = target.substr(0, pos);
        // A parent we may not write to is fine as long as it is there already.
        if (::mkdir(prefix.c_str(), 0777) != 0 && !isDirectoryUtf8(prefix))
            return false;
    }
    if (::mkdir(target.c_str(), 0777) != 0 && errno != EEXIST)
        return false;
    return isDirectoryUtf8(target);
}

} // namespace qrnplatform
