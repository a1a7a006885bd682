#pragma once

#include "qrn/IDocument.h"
#include "qrngl/Cursor.h"

#include <functional>
#include <memory>
#include <string>

namespace qrngl {
class MeasureManipulator;
class MeasureRenderer;
class MeasureSelectManipulator;
class SmartMeasureManipulator;
} // namespace qrngl

namespace qrnviewer {

// The viewer's measuring: the smart, distance and point tools and the selection of
// measurements in the document's chain, their labels drawn whatever tool is on.
class Measuring {
public:
    enum Mode { OFF, SMART, DISTANCE, POINT };
    Measuring(std::shared_ptr<qrn::IDocument> document, std::shared_ptr<qrngl::Cursor> cursor);
    ~Measuring();
    Measuring(const Measuring&) = delete;
    Measuring& operator=(const Measuring&) = delete;

    // 9 the next mode (smart, distance, point, off); Escape leaves a mode; Delete removes the
    // selected measurements, Shift+Delete every one. False for other keys.
    bool key(unsigned int key, bool shift);
    void setMode(Mode mode);
    Mode mode() const { return m_mode; }
    void setMessageSink(std::function<void(const std::string&)> sink) { m_say = std::move(sink); }

    // Measures between the entities at two window points on the renderer's pick canvas and
    // prints what it measured; false, saying why, when a point shows nothing to measure.
    static bool measureAt(const std::shared_ptr<qrn::IDocument>& document, int x0, int y0, int x1,
                          int y1);

private:
    void say(const std::string& text) const;

    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<qrngl::MeasureManipulator> m_quick;
    std::shared_ptr<qrngl::SmartMeasureManipulator> m_smart;
    std::shared_ptr<qrngl::MeasureSelectManipulator> m_select;
    std::shared_ptr<qrngl::MeasureRenderer> m_renderer;
    Mode m_mode = OFF;
    std::function<void(const std::string&)> m_say;
};

} // namespace qrnviewer
