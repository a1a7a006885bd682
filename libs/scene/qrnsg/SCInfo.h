#pragma once

#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

#include <cstdint>
#include <vector>

namespace qrnsg {

// What kind of document this is and the unit its lengths are in.
class QRNSG_EXPORT SCInfo : public Schema {
public:
    enum DOCUMENT_TYPE : std::int32_t { MODEL = 0, DRAWING = 1 };
    enum UNITS : std::int32_t {
        MILLIMETRE = 0,
        CENTIMETRE,
        METRE,
        INCH,
        FOOT,
        MICROMETRE,
        KILOMETRE,
        MILE
    };

    SCInfo();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;

    std::int32_t documentType = MODEL;
    // The unit values are shown in: the file's own.
    UNITS lengthUnit = MILLIMETRE;
    // The unit the coordinates are in (a reader may have scaled the file's).
    UNITS modelUnit = MILLIMETRE;
    // Further windows showing the document besides the main one (split views): whatever
    // refreshes the main window refreshes them too.
    std::vector<void*> views;
    // The node whose parts sections profile; -1 for the whole model.
    int rootNode = -1;
    // Set while the arrow keys belong to the host (they then never move a clip plane).
    bool arrowKeysReserved = false;
    // How far exploded parts stand apart: 1 just clear of each other.
    float explodeScale = 1.0f;
};

} // namespace qrnsg
