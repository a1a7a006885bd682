#pragma once

#include "qrn/IDocument.h"
#include "qrn/IUpdater.h"
#include "qrngl/Font.h"
#include "qrngl/IRendererFactory.h"
#include "qrngl/MeasureRT.h"
#include "qrngl/SCMeasure.h"
#include "qrngl/qrngl_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"
#include "qrnsg/Text.h"

#include <memory>
#include <string>
#include <vector>

namespace qrngl {

// The base of the measure classes: the collaborators every measurement needs, and what they
// share: units, label texts, screen to plane, views and markups. Components are looked up
// afresh at every call, so a change of units shows at once.
class QRNGL_EXPORT Measure {
public:
    Measure(std::shared_ptr<IRendererFactory> factory, std::shared_ptr<qrn::IDocument> document,
            std::shared_ptr<qrn::IUpdater> updater, std::shared_ptr<Font> font);
    Measure(const Measure&) = default;
    Measure& operator=(const Measure&) = default;
    virtual ~Measure();
    // One measuring step at a window point.
    virtual void measure(int x, int y, bool flag) = 0;

    // The display unit: its factor from metres, its name and the decimals (0 reads as 1).
    bool getUnitInfo(double& factor, std::wstring& unitName, unsigned char& precision) const;
    // A length in the display unit, with the prefix of its type, appended to out.
    void convertIntoString(float value, const MeasureRT::MType& type, std::wstring& out) const;
    // One label text at a position; turned to the viewer when the settings or the billboard
    // flag say so, keeping its place.
    void getText(const std::wstring& text, const qrnmath::Vec3& position,
                 const qrnmath::Mat4& matrix, const float& height, const float& width,
                 std::vector<qrnsg::Text>& out) const;
    // Where the ray through a window point meets a plane (a, b, c, d).
    bool getMeasureTextPoint(const int& x, const int& y, const qrnmath::Vec4& plane,
                             qrnmath::Vec3& point) const;
    // Whether the measurement under edit (the first record) is stored.
    bool isExistingMeasure() const;
    // Shows the measurement under edit only with the view of that index.
    bool associateView(const int& viewId) const;
    // Keeps the measurement under edit with the document, named as a dimension, on the
    // entity it measures.
    void addMarkup(const EntityPick& entity, const qrnsg::Text& text) const;
    qrnsg::BBox getRootBounds() const;
    // Tells the host that its view lists changed (hint 13 a new item, 14 a refresh).
    void updateViews(bool created) const;

protected:
    std::shared_ptr<IRendererFactory> m_factory;
    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<qrn::IUpdater> m_updater;
    std::shared_ptr<Font> m_font;
};

} // namespace qrngl
