#pragma once

#include "qrn/IApplication.h"
#include "qrn/IDocument.h"
#include "qrngl/Cursor.h"
#include "qrngl/section/ClipManipulator.h"
#include "qrnmath/Tuple.h"

#include <functional>
#include <memory>
#include <string>

namespace qrnviewer {

// The viewer's cut through the model: one clip manipulator in the document's chain, set from
// the command line and the keys, telling the user where the plane stands (offset in the
// document's unit) and which cut parts could not be capped.
class Sectioning {
public:
    enum Caps { PART_COLOURS, SINGLE, OFF };
    struct Settings {
        int axis = -1;       // 0 x, 1 y, 2 z; -1 no cut
        double offset = 0.0; // from the model's centre along +axis, in the document's unit
        bool flip = false;
        Caps caps = PART_COLOURS;
        bool hatch = false;
        bool profile = false;
    };

    Sectioning(std::shared_ptr<qrn::IDocument> document, std::shared_ptr<qrngl::Cursor> cursor);
    ~Sectioning();
    Sectioning(const Sectioning&) = delete;
    Sectioning& operator=(const Sectioning&) = delete;

    // Cuts as the settings say; false with a reason when the offset leaves the model.
    bool apply(const Settings& settings, std::string& error);
    // "x@12.5" or "y": false for anything else.
    static bool parseAxis(const std::string& text, Settings& settings);
    static bool parseCaps(const std::string& text, Caps& caps);

    // The viewer's keys: L the next axis, then the file's section views (Shift+L removes the
    // cut), J flip (Shift+J hatch),
    // K caps in part colours, one material, off (Shift+K profile). False for other keys.
    bool key(unsigned int key, bool shift);

    // Where the pick ray through a window pixel meets the plane; false without a plane.
    bool pointOnCut(int x, int y, qrnmath::Vec3& point) const;
    // "cut along X, offset 0.00 mm, caps in part colours, profile off"; "no cut".
    std::string describe() const;
    // The names of the cut parts the plane opens without a cap; empty when none.
    std::string uncapped() const;

    void setMessageSink(std::function<void(const std::string&)> sink) { m_say = std::move(sink); }
    const std::shared_ptr<qrngl::ClipManipulator>& manipulator() const { return m_clip; }

private:
    // 0 to 2 an axis, 3 on the file's sections, -1 none.
    void cut(int axis);
    int sections() const;
    void say(const std::string& text) const;

    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<qrngl::ClipManipulator> m_clip;
    // Takes the clip manipulator's offset text when a move ends.
    std::shared_ptr<qrn::IApplication> m_report;
    int m_axis = -1;
    std::function<void(const std::string&)> m_say;
};

} // namespace qrnviewer
