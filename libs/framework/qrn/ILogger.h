#pragma once

#include "qrn/qrn_export.h"

#include <string>

namespace qrn {

class QRN_EXPORT ILogger {
public:
    virtual ~ILogger();
    // Writes one whole message as one line.
    virtual void log(const std::wstring& message) = 0;
    // Whether messages go anywhere; callers skip work that only feeds the log.
    virtual bool isEnabled() const = 0;
};

} // namespace qrn
