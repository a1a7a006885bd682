#pragma once

#include "qrngl/Camera.h"
#include "qrnsg/BBox.h"

#include <memory>
#include <string>
#include <vector>

namespace qrnviewer {

// The standard orientations of a Z-up model: "iso", "front", "back", "left", "right", "top",
// "bottom". Front looks along +Y.
class StandardView {
public:
    static const std::vector<std::string>& names();
    // Turns the camera to the named view and fits the box; false for an unknown name.
    static bool apply(const std::string& name, const qrnsg::BBox& box,
                      const std::shared_ptr<qrngl::Camera>& camera);
};

} // namespace qrnviewer
