#include "qrn/LogManager.h"

namespace qrn {

namespace {
class NullLogger : public ILogger {
public:
    void log(const std::wstring&) override {}
    bool isEnabled() const override { return false; }
};
} // namespace

LogManager::LogManager() : m_logger(std::make_shared<NullLogger>()) {}

LogManager& LogManager::getInstance() {
    static LogManager instance;
    return instance;
}

std::shared_ptr<ILogger> LogManager::getLogger() const {
    return m_logger;
}

void LogManager::setLogger(std::shared_ptr<ILogger> logger) {
    m_logger = logger ? std::move(logger) : std::make_shared<NullLogger>();
}

} // namespace qrn
