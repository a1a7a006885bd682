#pragma once

#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// A post-renderer, or a single renderer, whose drawing changes without the model: highlights,
// rubber bands, labels. A canvas draws overlays after the model and everything else, and keeps
// the model's image, so that a change marked as showing only in overlays
// (SCRenderer::markOverlayChange) draws them alone over that image. An overlay draws the same
// whatever it finds of the model's GL state, save the clip planes.
class QRNGLDATA_EXPORT IOverlay {
public:
    virtual ~IOverlay();
};

} // namespace qrngl
