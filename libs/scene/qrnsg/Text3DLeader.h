#pragma once

#include "qrnsg/Polyline.h"

namespace qrnsg {

// The leader of a text: the line from the text to what it speaks of.
struct Text3DLeader {
    Polyline polyline;
};

} // namespace qrnsg
