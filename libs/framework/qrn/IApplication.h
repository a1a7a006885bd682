#pragma once

#include "qrn/qrn_export.h"

#include <string>

namespace qrn {

// The host application, as tools that report to it see it.
class QRN_EXPORT IApplication {
public:
    virtual ~IApplication();
    // A tool's result for the user, such as a clip plane's offset after a move; final is set
    // when the operation that produced it has ended.
    virtual void showResult(const std::wstring& text, bool final) = 0;
};

} // namespace qrn
