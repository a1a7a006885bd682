#pragma once

#include "qrngl/Camera.h"
#include "qrngl/IRenderer.h"
#include "qrnglutils/qrnglutils_export.h"

#include <memory>

namespace qrnglutils {

// The frame's view renderer: loads the camera's projection and view matrices, leaving the
// model-view stack selected.
class QRNGLUTILS_EXPORT ViewRenderer : public qrngl::IRenderer {
public:
    explicit ViewRenderer(std::shared_ptr<qrngl::Camera> camera);
    void render() const override;

private:
    std::shared_ptr<qrngl::Camera> m_camera;
};

} // namespace qrnglutils
