#include "qrnplatform/Settings.h"
#include "qrnplatform/File.h"
#include "qrnplatform/Text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qrnplatform {

namespace {

using Lines = std::vector<std::string>;

std::string configFolder() {
    std::string base = Text::toUtf8(Environment::getVariable(L"XDG_CONFIG_HOME"));
    // XDG base directories: a relative path is to be ignored.
    if (!base.empty() && base[0] == '/')
        return base;
    std::string home = Text::toUtf8(Environment::getVariable(L"HOME"));
    if (home.empty()) {
        if (const passwd* entry = ::getpwuid(::getuid()))
            home = entry->pw_dir ? entry->pw_dir : "";
    }
    return home.empty() ? std::string() : home + "/.config";
}

std::string settingsFile(const std::wstring& appName) {
    const std::string folder = configFolder();
    return folder.empty() ? std::string() : folder + "/" + Text::toUtf8(appName) + "/settings.ini";
}

std::string trim(const std::string& s) {
    const char* space = " \t\r";
    const std::size_t first = s.find_first_not_of(space);
    if (first == std::string::npos)
        return {};
    return s.substr(first, s.find_last_not_of(space) - first + 1);
}

char lowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameName(const std::string& a, const std::string& b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lowerAscii(a[i]) != lowerAscii(b[i]))
            return false;
    }
    return true;
}

// A name that would not read back as itself from the file is refused up front.
bool isStorableName(const std::string& name) {
    return !name.empty() && name == trim(name) &&
           name.find_first_of("=\r\n") == std::string::npos && name[0] != '[' && name[0] != ';' &&
           name[0] != '#';
}

bool isStorableSection(const std::string& section) {
    return section == trim(section) && section.find_first_of("]\r\n") == std::string::npos;
}

bool sectionHeader(const std::string& line, std::string& name) {
    const std::string t = trim(line);
    if (t.size() < 2 || t.front() != '[' || t.back() != ']')
        return false;
    name = trim(t.substr(1, t.size() - 2));
    return true;
}

bool entry(const std::string& line, std::string& name, std::string& value) {
    const std::string t = trim(line);
    if (t.empty() || t[0] == ';' || t[0] == '#' || t[0] == '[')
        return false;
    const std::size_t eq = t.find('=');
    if (eq == std::string::npos)
        return false;
    name = trim(t.substr(0, eq));
    value = trim(t.substr(eq + 1));
    return true;
}

bool parseDword(const std::string& text, unsigned int& value) {
    if (text.empty())
        return false;
    unsigned long long v = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
        v = v * 10 + static_cast<unsigned>(c - '0');
        if (v > 0xFFFFFFFFull)
            return false;
    }
    value = static_cast<unsigned int>(v);
    return true;
}

// Lines [first, last) of the section's body; false when the file has no such section.
bool findSection(const Lines& lines, const std::string& section, std::size_t& first,
                 std::size_t& last) {
    std::string name;
    std::size_t i = 0;
    while (i < lines.size() && !(sectionHeader(lines[i], name) && sameName(name, section)))
        ++i;
    if (i == lines.size())
        return false;
    first = ++i;
    while (i < lines.size() && !sectionHeader(lines[i], name))
        ++i;
    last = i;
    return true;
}

// The value of the section's first entry of that name, as it is the one a write updates.
// The text of the value in the section's lines [first, last).
bool findValue(const Lines& lines, std::size_t first, std::size_t last, const std::string& wanted,
               std::string& text) {
    std::string key;
    for (std::size_t i = first; i < last; ++i) {
        if (entry(lines[i], key, text) && sameName(key, wanted))
            return true;
    }
    return false;
}

bool findDword(const Lines& lines, std::size_t first, std::size_t last, const std::string& wanted,
               unsigned int& value) {
    std::string text;
    return findValue(lines, first, last, wanted, text) && parseDword(text, value);
}

// A missing file reads as empty; false only when a file is there and cannot be read, so that
// it is never overwritten with less than it holds.
bool readLines(const std::string& path, Lines& lines) {
    lines.clear();
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return errno == ENOENT || errno == ENOTDIR;
    std::string content;
    char buffer[4096];
    std::size_t n = 0;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0)
        content.append(buffer, n);
    const bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed)
        return false;
    std::size_t start = 0;
    while (start < content.size()) {
        std::size_t end = content.find('\n', start);
        if (end == std::string::npos)
            end = content.size();
        lines.push_back(content.substr(start, end - start));
        start = end + 1;
    }
    return true;
}

// Written to a temporary file beside it and renamed over it, so that a reader or a crash
// never sees half a file.
bool writeLines(const std::string& path, const Lines& lines) {
    const std::size_t slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0 &&
        !File::makeDirectories(Text::fromUtf8(path.substr(0, slash))))
        return false;
    std::string content;
    for (const std::string& line : lines)
        content += line + "\n";

    std::string temp = path + ".XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0)
        return false;
    struct stat old {};
    ::fchmod(fd, ::stat(path.c_str(), &old) == 0 ? (old.st_mode & 07777) : 0644);
    bool ok = true;
    std::size_t written = 0;
    while (ok && written < content.size()) {
        const ssize_t n = ::write(fd, content.data() + written, content.size() - written);
        if (n < 0 && errno == EINTR)
            continue;
        ok = n > 0;
        if (ok)
            written += static_cast<std::size_t>(n);
    }
    ok = ok && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    ok = ok && ::rename(temp.c_str(), path.c_str()) == 0;
    if (!ok)
        ::unlink(temp.c_str());
    return ok;
}

// UTF-8 without control characters: what a person or this class writes.
bool isText(const std::string& s) {
    for (char c : s)
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t')
            return false;
    return Text::toUtf8(Text::fromUtf8(s)) == s;
}

// Reads the settings file and finds the key's section in it; false when either is missing.
bool readSection(const std::wstring& appName, const std::wstring& subKey, Lines& lines,
                 std::size_t& first, std::size_t& last) {
    const std::string path = settingsFile(appName);
    return !path.empty() && readLines(path, lines) &&
           findSection(lines, Text::toUtf8(subKey), first, last);
}

} // namespace

std::wstring Settings::damage(const std::wstring& appName) {
    const std::string path = settingsFile(appName);
    if (path.empty())
        return {};
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        return {};
    Lines lines;
    if (!S_ISREG(info.st_mode) || !readLines(path, lines))
        return Text::fromUtf8(path) + L" cannot be read: " +
               Text::fromUtf8(S_ISREG(info.st_mode) ? std::strerror(errno) : "not a file");
    std::string name, value;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string t = trim(lines[i]);
        const bool text = isText(t);
        if (!text || !(t.empty() || t[0] == ';' || t[0] == '#' || sectionHeader(t, name) ||
                       (entry(t, name, value) && !name.empty())))
            return Text::fromUtf8(path) + L" line " + std::to_wstring(i + 1) +
                   (text ? L" is no setting" : L" is not text");
    }
    return {};
}

std::wstring Settings::location() const {
    return Text::fromUtf8(settingsFile(m_appName)) + L" [" + m_subKey + L"]";
}

bool Settings::readDword(const std::wstring& name, unsigned int& value) const {
    Lines lines;
    std::size_t first = 0, last = 0;
    return readSection(m_appName, m_subKey, lines, first, last) &&
           findDword(lines, first, last, Text::toUtf8(name), value);
}

bool Settings::readString(const std::wstring& name, std::wstring& value) const {
    Lines lines;
    std::size_t first = 0, last = 0;
    std::string text;
    if (!readSection(m_appName, m_subKey, lines, first, last) ||
        !findValue(lines, first, last, Text::toUtf8(name), text))
        return false;
    value = Text::fromUtf8(text);
    return true;
}

Settings::Lookup Settings::readDwordCreatingKey(const std::wstring& name, unsigned int& value) {
    const std::string path = settingsFile(m_appName);
    const std::string section = Text::toUtf8(m_subKey);
    Lines lines;
    if (path.empty() || !isStorableSection(section) || !readLines(path, lines))
        return KEY_UNAVAILABLE;
    std::size_t first = 0, last = 0;
    if (findSection(lines, section, first, last))
        return findDword(lines, first, last, Text::toUtf8(name), value) ? VALUE_READ
                                                                        : VALUE_MISSING;
    // The key is the section: an empty one is written, as the registry creates an empty key.
    if (!lines.empty() && !trim(lines.back()).empty())
        lines.emplace_back();
    lines.push_back("[" + section + "]");
    return writeLines(path, lines) ? VALUE_MISSING : KEY_UNAVAILABLE;
}

bool Settings::writeDword(const std::wstring& name, unsigned int value) {
    const std::string path = settingsFile(m_appName);
    const std::string section = Text::toUtf8(m_subKey);
    const std::string wanted = Text::toUtf8(name);
    Lines lines;
    if (path.empty() || !isStorableName(wanted) || !isStorableSection(section) ||
        !readLines(path, lines))
        return false;

    const std::string line = wanted + "=" + std::to_string(value);
    std::size_t first = 0, last = 0;
    if (findSection(lines, section, first, last)) {
        std::string key, text;
        std::size_t insertAt = first;
        bool replaced = false;
        for (std::size_t i = first; i < last && !replaced; ++i) {
            if (entry(lines[i], key, text) && sameName(key, wanted)) {
                lines[i] = line;
                replaced = true;
            } else if (!trim(lines[i]).empty()) {
                insertAt = i + 1;
            }
        }
        // After the section's last line, before the blank lines that part it from the next.
        if (!replaced)
            lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(insertAt), line);
    } else {
        if (!lines.empty() && !trim(lines.back()).empty())
            lines.emplace_back();
        lines.push_back("[" + section + "]");
        lines.push_back(line);
    }
    return writeLines(path, lines);
}

bool Settings::removeValue(const std::wstring& name) {
    const std::string path = settingsFile(m_appName);
    Lines lines;
    std::size_t first = 0, last = 0;
    if (!readSection(m_appName, m_subKey, lines, first, last))
        return false;
    const std::string wanted = Text::toUtf8(name);
    std::string key, text;
    bool removed = false;
    for (std::size_t i = last; i-- > first;) {
        if (entry(lines[i], key, text) && sameName(key, wanted)) {
            lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(i));
            removed = true;
        }
    }
    return removed && writeLines(path, lines);
}

} // namespace qrnplatform
