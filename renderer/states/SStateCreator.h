#pragma once

#include "qrn/IDocument.h"
#include "qrn/IState.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// Captures the parts of the scene a saved scene state holds. Each capture fills the state and
// returns true, or returns false and leaves it as it was when a component it needs is missing.
class QRNGL_EXPORT SStateCreator {
public:
    explicit SStateCreator(std::shared_ptr<qrn::IDocument> document);
    ~SStateCreator();

    bool getCameraState(std::shared_ptr<qrn::IState>& state) const;
    bool getVisibilityState(std::shared_ptr<qrn::IState>& state) const;
    bool getColorState(std::shared_ptr<qrn::IState>& state) const;
    bool getTransparencyState(std::shared_ptr<qrn::IState>& state) const;
    // Makes no state: says only whether the placements could be captured (the topology and
    // resources are there). Kept so.
    bool getTransformState(std::shared_ptr<qrn::IState>& state) const;
    // Restoring it cuts again through the clip manipulators of the renderer component.
    bool getSectionState(std::shared_ptr<qrn::IState>& state) const;

private:
    std::shared_ptr<qrn::IDocument> m_document;
};

} // namespace qrngl
