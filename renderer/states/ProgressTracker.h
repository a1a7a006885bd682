#pragma once

#include "qrn/IStatusManager.h"
#include "qrngl/qrngl_export.h"

#include <string>

namespace qrngl {

// Reports the progress of a long operation in percent to the host's status manager: a tracker
// covers a range of the whole, advancing by an increment every interval steps; a child tracker
// spreads one step of its parent over steps of its own.
class QRNGL_EXPORT ProgressTracker {
public:
    // task: the name the status manager shows the progress under.
    ProgressTracker(qrn::IStatusManager* status, int range, int start,
                    std::wstring task = L"exploding");

    // Spreads the range over that many steps: an increment a step, or, with fewer percent
    // than steps, one percent every interval steps.
    void calcIncr(int steps);
    // One step done.
    void setProgress();
    // Reports 100.
    void finish();
    // The next tracker covers one increment of this one, from where this one stands.
    void setNextTracker(ProgressTracker& next) const;

    int range() const { return m_range; }
    int current() const { return m_current; }
    int increment() const { return m_increment; }
    int interval() const { return m_interval; }

private:
    void report() const;

    qrn::IStatusManager* m_status;
    int m_range;
    int m_current;
    int m_increment = 1;
    int m_interval = 1;
    int m_counter = 0;
    std::wstring m_task;
};

} // namespace qrngl
