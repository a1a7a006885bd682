#pragma once

#include "qrngl/SCRenderer.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/Section.h"

#include <memory>

namespace qrngl {

// Switches every clip manipulator of the renderer component to the plane of a given section
// (a captured state's); an empty one removes the plane.
class QRNGL_EXPORT SectionStateActivator {
public:
    explicit SectionStateActivator(std::shared_ptr<SCRenderer> renderer);
    // False only when the renderer component is missing.
    bool execute(std::shared_ptr<qrnsg::Section> section);

private:
    std::shared_ptr<SCRenderer> m_renderer;
};

} // namespace qrngl
