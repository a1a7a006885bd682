#pragma once

#include "qrn/ILogger.h"
#include "qrn/qrn_export.h"

#include <cstdio>
#include <string>

namespace qrn {

// Appends each message as a UTF-8 line to a file, flushed at once so that nothing is lost if
// the process dies. A file that cannot be opened makes a logger that drops its messages.
class QRN_EXPORT FileLogger : public ILogger {
public:
    explicit FileLogger(const std::wstring& path);
    ~FileLogger() override;
    FileLogger(const FileLogger&) = delete;
    FileLogger& operator=(const FileLogger&) = delete;

    void log(const std::wstring& message) override;
    bool isEnabled() const override { return m_file != nullptr; }
    bool isOpen() const { return m_file != nullptr; }

private:
    std::FILE* m_file = nullptr;
};

} // namespace qrn
