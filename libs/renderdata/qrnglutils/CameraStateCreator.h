#pragma once

#include "qrn/IState.h"
#include "qrngl/SCRenderer.h"
#include "qrnglutils/qrnglutils_export.h"

#include <memory>

namespace qrnglutils {

// Captures the renderer's camera as a state that puts it back.
class QRNGLUTILS_EXPORT CameraStateCreator {
public:
    explicit CameraStateCreator(std::shared_ptr<qrngl::SCRenderer> renderer);
    // Empty without a camera.
    std::shared_ptr<qrn::IState> create() const;

private:
    std::shared_ptr<qrngl::SCRenderer> m_renderer;
};

} // namespace qrnglutils
