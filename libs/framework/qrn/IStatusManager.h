#pragma once

#include "qrn/qrn_export.h"

#include <string>

namespace qrn {

// Where long operations report what they are doing: the host shows it (a status bar, a
// terminal line). Calls come from the thread doing the work.
class QRN_EXPORT IStatusManager {
public:
    virtual ~IStatusManager();
    // A message for the user, such as a warning about part of a file that was skipped.
    virtual void setStatus(const std::wstring& text) = 0;
    // Progress of a named task, 0 to 100; a new task name starts a new progress line.
    virtual void setProgress(const std::wstring& task, int percent) = 0;
    // The current task is over (finished or abandoned).
    virtual void endProgress() = 0;
};

} // namespace qrn
