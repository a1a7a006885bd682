#include "qrn/FileLogger.h"

#include "qrnplatform/File.h"
#include "qrnplatform/Text.h"

namespace qrn {

FileLogger::FileLogger(const std::wstring& path) : m_file(qrnplatform::File::open(path, "ab")) {}

FileLogger::~FileLogger() {
    if (m_file)
        std::fclose(m_file);
}

void FileLogger::log(const std::wstring& message) {
    if (!m_file)
        return;
    std::string line = qrnplatform::Text::toUtf8(message);
    line.push_back('\n');
    std::fwrite(line.data(), 1, line.size(), m_file);
    std::fflush(m_file);
}

} // namespace qrn
