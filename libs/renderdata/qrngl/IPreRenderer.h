#pragma once

#include "qrngl/IRenderer.h"
#include "qrngldata/qrngldata_export.h"

#include <memory>

namespace qrngl {

// A renderer that draws before the scene.
class QRNGLDATA_EXPORT IPreRenderer : public IRenderer {
public:
    ~IPreRenderer() override;
};

// Orders pre-renderers highest order() first.
struct QRNGLDATA_EXPORT gtorder {
    bool operator()(const std::shared_ptr<IPreRenderer>& a,
                    const std::shared_ptr<IPreRenderer>& b) const;
};

} // namespace qrngl
