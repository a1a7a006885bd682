#include "qrngl/states/ProgressTracker.h"

namespace qrngl {

ProgressTracker::ProgressTracker(qrn::IStatusManager* status, int range, int start,
                                 std::wstring task)
    : m_status(status), m_range(range), m_current(start), m_task(std::move(task)) {}

void ProgressTracker::calcIncr(int steps) {
    if (steps <= 0)
        return;
    m_increment = m_range / steps;
    if (m_increment != 0) {
        m_interval = 1;
        return;
    }
    m_increment = 1;
    const float perStep = static_cast<float>(m_range) / static_cast<float>(steps);
    m_interval = perStep > 0.0f ? static_cast<int>(1.0f / perStep) : 1;
}

void ProgressTracker::setProgress() {
    if (!m_status)
        return;
    if (m_counter == m_interval) {
        m_current += m_increment;
        report();
        m_counter = 0;
    } else {
        ++m_counter;
    }
}

void ProgressTracker::finish() {
    if (!m_status)
        return;
    m_current = 100;
    report();
}

void ProgressTracker::setNextTracker(ProgressTracker& next) const {
    next.m_status = m_status;
    next.m_range = m_increment;
    next.m_current = m_current;
}

void ProgressTracker::report() const {
    m_status->setProgress(m_task, m_current);
}

} // namespace qrngl
