#pragma once

#include "qrngl/IManipulator.h"
#include "qrngl/picking/SelectManipulator.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// Pre-highlights what a click would select: on each motion with no button down, the entity
// under the cursor becomes the set's hovered one. A drag clears it.
class QRNGL_EXPORT HighlightManipulator : public IManipulator {
public:
    enum : short { ORDER = 801 };

    HighlightManipulator(std::shared_ptr<SelectManipulator> select,
                         std::shared_ptr<SelectionSet> set, std::shared_ptr<Cursor> cursor);

    // CHANGED when the hovered entity changed (the frame must show it).
    FrameStatus mouseMotion(unsigned int flags, int x, int y) override;
    short order() const override { return ORDER; }
    void init() override;

private:
    std::shared_ptr<SelectManipulator> m_select;
    std::shared_ptr<SelectionSet> m_set;
};

} // namespace qrngl
