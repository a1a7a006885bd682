#include "qrnimport/ProgressBridge.h"

#include <algorithm>

namespace qrnimport {

ProgressBridge::Deadline ProgressBridge::deadlineAfter(double seconds) {
    // A year stands for never: far enough, and no overflow in the clock's arithmetic.
    const double limited = seconds > 0.0 ? std::min(seconds, 3.2e7) : 3.2e7;
    return std::chrono::steady_clock::now() +
           std::chrono::duration_cast<std::chrono::steady_clock::duration>(
               std::chrono::duration<double>(limited));
}

ProgressBridge::ProgressBridge(qrn::IStatusManager* status, std::wstring task, int from, int to,
                               Deadline deadline)
    : m_status(status), m_task(std::move(task)), m_from(from), m_to(to),
      m_thread(std::this_thread::get_id()), m_deadline(deadline) {}

void ProgressBridge::Show(const Message_ProgressScope&, const Standard_Boolean isForce) {
    // The status manager takes calls from the working thread only.
    if (!m_status || std::this_thread::get_id() != m_thread)
        return;
    const double position = std::min(1.0, std::max(0.0, GetPosition()));
    const int percent = m_from + static_cast<int>(position * (m_to - m_from));
    if (percent != m_last || isForce) {
        m_last = percent;
        m_status->setProgress(m_task, percent);
    }
}

} // namespace qrnimport
