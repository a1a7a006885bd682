#pragma once

#include "qrn/IState.h"
#include "qrngl/SCClipping.h"
#include "qrngl/SCTriad.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/Section.h"

#include <functional>
#include <memory>

namespace qrnglutils {

// Captures the cut: the plane in force as a section (through a point of it, its normal, its
// cap and profile settings), whether it is flipped, and the triad. Restoring hands the section
// (empty for no cut) to the activator it is given, which makes the clip tools cut again.
class QRNGLUTILS_EXPORT SectionStateCreator {
public:
    using Activate = std::function<void(const std::shared_ptr<qrnsg::Section>&)>;
    SectionStateCreator(std::shared_ptr<qrngl::SCClipping> clipping,
                        std::shared_ptr<qrngl::SCTriad> triad, Activate activate = nullptr);
    std::shared_ptr<qrn::IState> create() const;

    class QRNGLUTILS_EXPORT State : public qrn::IState {
    public:
        void restore() override;
        std::shared_ptr<qrnsg::Section> section; // empty: no cut
        bool flipped = false;
        qrngl::SCTriad triad;

    private:
        friend class SectionStateCreator;
        std::weak_ptr<qrngl::SCClipping> m_clipping;
        std::weak_ptr<qrngl::SCTriad> m_triad;
        Activate m_activate;
    };

private:
    std::shared_ptr<qrngl::SCClipping> m_clipping;
    std::shared_ptr<qrngl::SCTriad> m_triad;
    Activate m_activate;
};

} // namespace qrnglutils
