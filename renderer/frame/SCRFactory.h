#pragma once

#include "qrngl/qrngl_export.h"
#include "qrnsg/IFactory.h"

#include <memory>

namespace qrnglr {

// The renderer library's link of the document's factory chain: makes the renderer
// infrastructure component (18) and hands every other type to the next link.
class QRNGL_EXPORT SCRFactory : public qrnsg::IFactory {
public:
    explicit SCRFactory(std::shared_ptr<qrnsg::IFactory> next);
    ~SCRFactory() override;
    std::shared_ptr<qrnsg::Schema> create(short type) override;

private:
    std::shared_ptr<qrnsg::IFactory> m_next;
};

// A new link in front of next; the host puts it before its other factories.
QRNGL_EXPORT std::shared_ptr<qrnsg::IFactory> createFactory(std::shared_ptr<qrnsg::IFactory> next);

} // namespace qrnglr
