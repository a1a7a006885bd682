#pragma once

#include "qrngl/qrngl_export.h"
#include "qrnsg/Schema.h"

#include <array>

namespace qrngl {

// The renderer infrastructure component: slots that renderer libraries fill with their own
// shared objects; all empty when made.
class QRNGL_EXPORT SCRenderInfra : public qrnsg::Schema {
public:
    SCRenderInfra();
    SCRenderInfra(const SCRenderInfra& other);
    SCRenderInfra& operator=(const SCRenderInfra& other);
    ~SCRenderInfra() override;

    short type() const override;
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    std::array<void*, 5> slots{};
};

} // namespace qrngl
