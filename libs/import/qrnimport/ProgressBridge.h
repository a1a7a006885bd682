#pragma once

#include "qrn/IStatusManager.h"

#include <Message_ProgressIndicator.hxx>

#include <chrono>
#include <string>
#include <thread>

namespace qrnimport {

// Open CASCADE's progress, passed on as percentages of one task, and the import's time limit:
// past the deadline the reader is asked to stop at its next step.
class ProgressBridge : public Message_ProgressIndicator {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    // The deadline that many seconds from now; none for 0 or less.
    static Deadline deadlineAfter(double seconds);
    static bool passed(Deadline deadline) { return std::chrono::steady_clock::now() > deadline; }

    // A null status only watches the deadline.
    ProgressBridge(qrn::IStatusManager* status, std::wstring task, int from, int to,
                   Deadline deadline);

    void Show(const Message_ProgressScope&, const Standard_Boolean isForce) override;
    Standard_Boolean UserBreak() override { return passed(m_deadline); }

private:
    qrn::IStatusManager* m_status;
    std::wstring m_task;
    int m_from, m_to;
    int m_last = -1;
    std::thread::id m_thread;
    Deadline m_deadline;
};

} // namespace qrnimport
