#pragma once

#include "qrn/IDocument.h"
#include "qrngl/IOverlay.h"
#include "qrngl/IPicker.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/qrngl_export.h"

#include <memory>
#include <unordered_map>

namespace qrngl {

class SCClipping;
class SCRenderer;

// Draws what shows of the clip plane after the scene: the section profile (the selected
// segment in its own colour), the plane's border and its translucent quad, in the picked
// colour while the pointer rests on it. Leaves the clip plane off, so that overlays drawn
// later are not cut. In a pick pass it draws the plane and each profile segment under names
// of their own, and choose() says which was picked.
class QRNGL_EXPORT PostClipRenderer : public IPostRenderer, public IPicker, public IOverlay {
public:
    enum : short { ORDER = 600 };

    explicit PostClipRenderer(std::shared_ptr<qrn::IDocument> document);
    ~PostClipRenderer() override;

    void setPlane(std::shared_ptr<IRenderer> quad);
    void setPlaneBorder(std::shared_ptr<IRenderer> border);
    void setProfile(std::shared_ptr<IRenderer> profile);
    void render() const override;
    short order() const override { return ORDER; }
    void pick(std::shared_ptr<NamesInitializer> names,
              std::shared_ptr<qrnsg::IPairVisitor> visitor) override;
    void choose(const FilterResult& result) const override;

private:
    void render(const SCClipping& clipping, const SCRenderer& renderer, bool plane) const;
    // Each profile segment of the plane in force, with its id; the selected one first when
    // selectedFirst, else in order.
    template <class Draw>
    static void forEachSegment(const SCClipping& clipping, Draw&& draw);

    // Weak: the document holds this renderer through its renderer component.
    std::weak_ptr<qrn::IDocument> m_document;
    std::shared_ptr<IRenderer> m_quad;
    std::shared_ptr<IRenderer> m_border;
    std::shared_ptr<IRenderer> m_profile;
    // Of the last pick pass: the plane's name and each segment's name.
    mutable unsigned int m_planeName = 0;
    mutable std::unordered_map<unsigned int, int> m_segmentNames;
};

} // namespace qrngl
