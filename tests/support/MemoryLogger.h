#pragma once

#include "qrn/LogManager.h"

#include <memory>
#include <string>
#include <vector>

namespace qrntest {

// Keeps every message; set on qrn::LogManager for as long as the object lives.
class MemoryLogger : public qrn::ILogger {
public:
    void log(const std::wstring& message) override { lines.push_back(message); }
    bool isEnabled() const override { return enabled; }

    std::vector<std::wstring> lines;
    bool enabled = true;
};

class ScopedMemoryLogger {
public:
    ScopedMemoryLogger() : logger(std::make_shared<MemoryLogger>()) {
        qrn::LogManager::getInstance().setLogger(logger);
    }
    ~ScopedMemoryLogger() { qrn::LogManager::getInstance().setLogger(nullptr); }
    ScopedMemoryLogger(const ScopedMemoryLogger&) = delete;
    ScopedMemoryLogger& operator=(const ScopedMemoryLogger&) = delete;

    std::vector<std::wstring>& lines() { return logger->lines; }
    // Takes the messages so far, leaving none.
    std::vector<std::wstring> take() {
        std::vector<std::wstring> out;
        out.swap(logger->lines);
        return out;
    }

    std::shared_ptr<MemoryLogger> logger;
};

} // namespace qrntest
