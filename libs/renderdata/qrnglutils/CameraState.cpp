#include "qrnglutils/CameraState.h"

namespace qrnglutils {

CameraState::CameraState(const std::shared_ptr<qrngl::Camera>& camera) : m_camera(camera) {
    if (camera)
        m_state = *camera;
}

void CameraState::restore() {
    auto camera = m_camera.lock();
    if (!camera)
        return;
    const unsigned int width = camera->viewportWidth(), height = camera->viewportHeight();
    *camera = m_state;
    camera->setViewport(width, height);
}

} // namespace qrnglutils
