#pragma once

#include "qrn/IState.h"
#include "qrnui/qrnui_export.h"

#include <memory>
#include <vector>

namespace qrnui {

// Undo and redo of recorded changes, each a pair of states: before and after.
class QRNUI_EXPORT UndoStack {
public:
    struct Step {
        std::shared_ptr<qrn::IState> before;
        std::shared_ptr<qrn::IState> after;
    };

    // Records a change; drops what could have been redone.
    void push(std::shared_ptr<qrn::IState> before, std::shared_ptr<qrn::IState> after);
    bool undo(); // restores the last step's before; false when there is nothing to undo
    bool redo();
    bool canUndo() const { return m_next > 0; }
    bool canRedo() const { return m_next < m_steps.size(); }
    std::size_t size() const { return m_steps.size(); }
    const Step& step(std::size_t i) const { return m_steps[i]; }
    void clear();

private:
    std::vector<Step> m_steps;
    std::size_t m_next = 0; // steps before this one are done
};

} // namespace qrnui
