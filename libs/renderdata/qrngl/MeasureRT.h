#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnmath/Tuple.h"

#include <memory>
#include <string>
#include <vector>

namespace qrngl {

// The X, Y and Z components of a distance and its distance along a normal, shown beside it
// when they say more than the distance alone.
struct QRNGLDATA_EXPORT DeltaMeasureData {
    qrnmath::Vec3 delta;
    float normal = 0.0f;
    bool hasNormal = false;
    bool valid = false;
    void clearAll() { *this = DeltaMeasureData(); }
};

// One measurement of the document, as its tools made it: what was picked, what it measured
// and where its label and leaders go. Lengths in the coordinates' unit, angles in radians.
class QRNGLDATA_EXPORT MeasureRT {
public:
    // What it measures. The delta kinds and the normal distance name the lines of a distance's
    // label.
    enum MType : int {
        NONE = 0,
        POINT = 1,
        DISTANCE = 2,
        ANGLE = 3,
        RADIUS = 4,
        DIAMETER = 5,
        LENGTH = 6,
        AREA = 7,
        TAPE = 8,
        DELTA_X = 128,
        DELTA_Y = 352,
        DELTA_Z = 800,
        NORMAL = 1600
    };
    // TEMPORARY measurements go with the tool; SAVED ones stay in the document.
    enum SaveMode : int { TEMPORARY = 0, SAVED = 1 };

    MeasureRT(MType type, SaveMode mode) : type(type), saveMode(mode) {}
    void clear();

    MType type;
    SaveMode saveMode;
    unsigned int id = 0;
    float value = 0.0f;
    bool exact = false;
    // The entity names measured, in the order they were picked.
    std::vector<unsigned int> entities;
    // Distance: the two closest points; radius: the centre and a point on the circle; angle:
    // its vertex and a point on each leg; tape: its points.
    std::vector<qrnmath::Vec3> points;
    qrnmath::Vec3 anchor; // where the label stands
    std::wstring text;    // the label, lines parted by '\n'
    std::wstring name;    // kept with the document: what it is called there
    DeltaMeasureData delta;
};

} // namespace qrngl
