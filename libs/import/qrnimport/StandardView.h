#pragma once

#include "qrngl/Camera.h"
#include "qrnimport/qrnimport_export.h"
#include "qrnsg/BBox.h"
#include "qrnsg/SCView.h"

#include <memory>
#include <string>
#include <vector>

namespace qrnimport {

// The standard orientations of the view component by their command-line names: "iso",
// "front", "back", "left", "right", "top", "bottom" (a Z-up model; front looks along +Y).
class QRNIMPORT_EXPORT StandardView {
public:
    static const std::vector<std::string>& names();
    // The orientation of a name; false for an unknown name.
    static bool orientation(const std::string& name, qrnsg::SCView::ORIENTATION& orientation);
    // Turns the camera to the named orientation and fits the box; false for an unknown name.
    static bool apply(const std::string& name, const qrnsg::BBox& box,
                      const std::shared_ptr<qrngl::Camera>& camera);
};

} // namespace qrnimport
