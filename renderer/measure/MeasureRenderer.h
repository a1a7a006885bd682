#pragma once

#include "qrn/IDocument.h"
#include "qrngl/Font.h"
#include "qrngl/IOverlay.h"
#include "qrngl/IPicker.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/IRendererFactory.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/MMaterial.h"
#include "qrnsg/Measure.h"
#include "qrnsg/PLMaterial.h"

#include <map>
#include <memory>
#include <vector>

namespace qrngl {

// Draws the measurements over the model as window-space labels on translucent backgrounds,
// with their points and the lines between them: the quick measurements of the temporary
// graphics and the measurement records. A clip plane never cuts them. Labels of records can
// be picked (as tool drawables): a pick chooses the record.
class QRNGL_EXPORT MeasureRenderer : public IPostRenderer, public IPicker, public IOverlay {
public:
    enum : short { ORDER = 300 };
    MeasureRenderer(std::shared_ptr<qrn::IDocument> document,
                    std::shared_ptr<IRendererFactory> factory);
    ~MeasureRenderer() override;
    short order() const override { return ORDER; }
    void render() const override;
    // Draws this measurement alone, instead of those of the document.
    void set(std::shared_ptr<qrnsg::Measure> measure) { m_measure = std::move(measure); }
    void pick(std::shared_ptr<NamesInitializer> names,
              std::shared_ptr<qrnsg::IPairVisitor> visitor) override;
    void choose(const FilterResult& result) const override;

private:
    struct Label {
        qrnsg::Measure measure;
        unsigned int record = 0; // 0 for a quick measurement
        bool selected = false;
        bool strip = false; // its points joined in order (records), or its first two
    };
    std::vector<Label> labels() const;
    // The label font, made on the context current at the first frame.
    const Font* font() const;
    void drawBackgrounds(const std::vector<Label>& labels) const;
    void drawTexts(const std::vector<Label>& labels) const;
    void drawPoints(const std::vector<Label>& labels) const;

    std::weak_ptr<qrn::IDocument> m_document;
    std::shared_ptr<IRendererFactory> m_factory;
    qrnsg::PLMaterial m_frame;
    qrnsg::MMaterial m_background;
    std::shared_ptr<qrnsg::Measure> m_measure;
    mutable std::shared_ptr<Font> m_font;
    mutable bool m_fontTried = false;
};

} // namespace qrngl
