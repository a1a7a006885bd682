#pragma once

#include "qrn/IDocument.h"
#include "qrnmath/Tuple.h"

#include <memory>
#include <string>

namespace qrnviewer {

// What the user sees named for a picked or selected entity: the placed part, the kind and
// index, and the analytic type with its size, e.g.
// "face 3 of Shaft (Shaft Ø20): cylindrical face, radius 10 mm".
class EntityText {
public:
    static std::string describe(const std::shared_ptr<qrn::IDocument>& document, unsigned int name);
    // A point in the model's coordinates with its unit: "(1.5, 0, 20) mm".
    static std::string point(const std::shared_ptr<qrn::IDocument>& document,
                             const qrnmath::Vec3& p);
};

} // namespace qrnviewer
