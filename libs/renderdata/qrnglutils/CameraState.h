#pragma once

#include "qrn/IState.h"
#include "qrngl/Camera.h"
#include "qrnglutils/qrnglutils_export.h"

#include <memory>

namespace qrnglutils {

// An undo record of a camera move: a copy of the camera's state, put back into the same
// camera by restore(). The viewport is the window's and stays as it is then.
class QRNGLUTILS_EXPORT CameraState : public qrn::IState {
public:
    explicit CameraState(const std::shared_ptr<qrngl::Camera>& camera);

    // Nothing when the camera is gone.
    void restore() override;
    const qrngl::Camera& state() const { return m_state; }

private:
    std::weak_ptr<qrngl::Camera> m_camera;
    qrngl::Camera m_state;
};

} // namespace qrnglutils
