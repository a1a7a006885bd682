#include "qrnglutils/CameraStateCreator.h"

#include "qrnglutils/CameraState.h"

namespace qrnglutils {

CameraStateCreator::CameraStateCreator(std::shared_ptr<qrngl::SCRenderer> renderer)
    : m_renderer(std::move(renderer)) {}

std::shared_ptr<qrn::IState> CameraStateCreator::create() const {
    if (!m_renderer || !m_renderer->camera)
        return nullptr;
    return std::make_shared<CameraState>(m_renderer->camera);
}

} // namespace qrnglutils
