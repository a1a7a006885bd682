#pragma once

#include "qrngl/IRenderer.h"
#include "qrngldata/qrngldata_export.h"

#include <memory>

namespace qrngl {

// A renderer that draws after the scene.
class QRNGLDATA_EXPORT IPostRenderer : public IRenderer {
public:
    ~IPostRenderer() override;
    short order() const override;
};

// Orders post-renderers lowest order() first.
struct QRNGLDATA_EXPORT ltorder {
    bool operator()(const std::shared_ptr<IPostRenderer>& a,
                    const std::shared_ptr<IPostRenderer>& b) const;
};

} // namespace qrngl
