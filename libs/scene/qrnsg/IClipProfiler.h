#pragma once

#include "qrnsg/qrnsg_export.h"

#include <memory>

namespace qrnsg {

class IPairFunctor;

// Computes the section profile of the document's parts for its clip planes: the lines where
// each plane meets each part, of the mesh instances the visibility functor lets through.
class QRNSG_EXPORT IClipProfiler {
public:
    virtual ~IClipProfiler();
    // False when the document lacks what a profile is made from.
    virtual bool create(std::shared_ptr<IPairFunctor> visibility) = 0;
};

} // namespace qrnsg
