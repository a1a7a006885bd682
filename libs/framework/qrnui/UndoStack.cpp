#include "qrnui/UndoStack.h"

namespace qrnui {

void UndoStack::push(std::shared_ptr<qrn::IState> before, std::shared_ptr<qrn::IState> after) {
    m_steps.resize(m_next);
    m_steps.push_back(Step{std::move(before), std::move(after)});
    m_next = m_steps.size();
}

bool UndoStack::undo() {
    if (!canUndo())
        return false;
    --m_next;
    if (m_steps[m_next].before)
        m_steps[m_next].before->restore();
    return true;
}

bool UndoStack::redo() {
    if (!canRedo())
        return false;
    if (m_steps[m_next].after)
        m_steps[m_next].after->restore();
    ++m_next;
    return true;
}

void UndoStack::clear() {
    m_steps.clear();
    m_next = 0;
}

} // namespace qrnui
