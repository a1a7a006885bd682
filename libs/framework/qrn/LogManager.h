#pragma once

#include "qrn/ILogger.h"
#include "qrn/qrn_export.h"

#include <memory>

namespace qrn {

// The process-wide logger. Until the host sets one, messages are dropped.
class QRN_EXPORT LogManager {
public:
    static LogManager& getInstance();

    std::shared_ptr<ILogger> getLogger() const;
    void setLogger(std::shared_ptr<ILogger> logger);

private:
    LogManager();
    std::shared_ptr<ILogger> m_logger;
};

} // namespace qrn
