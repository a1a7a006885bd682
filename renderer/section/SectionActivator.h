#pragma once

#include "qrngl/SCRenderer.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/SCPmi.h"

#include <memory>

namespace qrngl {

// Switches every clip manipulator of the renderer component to the plane of one of the
// document's section views, by index; -1 or an index past them removes the plane.
class QRNGL_EXPORT SectionActivator {
public:
    SectionActivator(std::shared_ptr<SCRenderer> renderer, std::shared_ptr<qrnsg::SCPmi> pmi);
    // False only when the renderer or the PMI component is missing.
    bool execute(const int& sectionIndex);

private:
    std::shared_ptr<SCRenderer> m_renderer;
    std::shared_ptr<qrnsg::SCPmi> m_pmi;
};

} // namespace qrngl
