#pragma once

#include "qrn/IState.h"
#include "qrngl/SCMarkupView.h"
#include "qrngl/SCRenderer.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCSceneRT.h"

#include <memory>
#include <utility>
#include <vector>

namespace qrnglutils {

// Captures what is shown: every primitive's visible bit (parts, their edges and vertices, PMI
// lines and texts) and the shown markups. Restoring it shows the same, and, given the
// renderer, has its canvases draw and pick anew.
class QRNGLUTILS_EXPORT VisibilityStateCreator {
public:
    VisibilityStateCreator(std::shared_ptr<qrnsg::SCPmi> pmi, std::shared_ptr<qrnsg::SCSceneRT> rt,
                           std::shared_ptr<qrngl::SCMarkupView> markups,
                           std::shared_ptr<qrngl::SCRenderer> renderer = nullptr);
    std::shared_ptr<qrn::IState> create() const;

    class QRNGLUTILS_EXPORT State : public qrn::IState {
    public:
        void restore() override;
        // Per kind (meshes, polylines, texts, points): each primitive and whether it shows.
        std::vector<std::pair<int, bool>> shown[4];
        std::vector<int> markups;

    private:
        friend class VisibilityStateCreator;
        std::weak_ptr<qrnsg::SCSceneRT> m_rt;
        std::weak_ptr<qrngl::SCMarkupView> m_markups;
        std::weak_ptr<qrngl::SCRenderer> m_renderer;
    };

private:
    std::shared_ptr<qrnsg::SCPmi> m_pmi;
    std::shared_ptr<qrnsg::SCSceneRT> m_rt;
    std::shared_ptr<qrngl::SCMarkupView> m_markups;
    std::shared_ptr<qrngl::SCRenderer> m_renderer;
};

} // namespace qrnglutils
