#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

#include <string>
#include <vector>

namespace qrnsg {

// The saved views of the document, as the model file named and placed them.
class QRNSG_EXPORT SCView : public Schema {
public:
    struct View {
        std::wstring name;
        qrnmath::Vec3 eye;
        qrnmath::Vec3 target;
        qrnmath::Vec3 up{0.0f, 0.0f, 1.0f};
        bool orthographic = true;
        float viewHeight = 0.0f; // world units at the target; 0 when the file gives none
    };

    SCView();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;

    // The index of the view with this name, or -1.
    int find(const std::wstring& name) const;

    std::vector<View> views;
};

} // namespace qrnsg
