#pragma once

#include "qrn/qrn_export.h"

#include <string>

namespace qrn {

class QRN_EXPORT ILogger {
public:
    virtual ~ILogger();
    // Writes one whole message as one line.
    virtual void log(const std::wstring& message) = 0;
};

} // namespace qrn
