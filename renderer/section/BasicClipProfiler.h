#pragma once

#include "qrn/IDocument.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/IClipProfiler.h"

#include <memory>

namespace qrngl {

// The section profile of every part for the document's clip planes: per plane and node, the
// line segments where the plane meets the node's shown meshes, entered in the clipping
// component with their hierarchy and bounds.
class QRNGL_EXPORT BasicClipProfiler : public qrnsg::IClipProfiler {
public:
    // tolerance: distances below it count as on the plane, in the document's length unit.
    BasicClipProfiler(std::shared_ptr<qrn::IDocument> document, const float& tolerance);
    bool create(std::shared_ptr<qrnsg::IPairFunctor> visibility) override;

private:
    std::weak_ptr<qrn::IDocument> m_document;
    float m_tolerance;
};

} // namespace qrngl
