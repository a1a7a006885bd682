#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnsg/IFactory.h"

namespace qrngl {

// The renderer-data library's link of the factory chain: the renderer, strip- and list-renderer,
// clipping (with its plane and node clip data), measure, triad and markup-view components;
// every other type goes to the next link.
class QRNGLDATA_EXPORT SCGLFactory : public qrnsg::IFactory {
public:
    explicit SCGLFactory(std::shared_ptr<qrnsg::IFactory> next);
    std::shared_ptr<qrnsg::Schema> create(short type) override;

private:
    std::shared_ptr<qrnsg::IFactory> m_next;
};

} // namespace qrngl
