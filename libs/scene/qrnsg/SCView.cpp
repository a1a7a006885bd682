#include "qrnsg/SCView.h"

namespace qrnsg {

SCView::SCView() : Schema(SCHEMA_VIEW) {}

std::shared_ptr<Schema> SCView::clone() const {
    return std::make_shared<SCView>(*this);
}

void SCView::clear() {
    views.clear();
}

int SCView::find(const std::wstring& name) const {
    for (std::size_t i = 0; i < views.size(); ++i)
        if (views[i].name == name)
            return static_cast<int>(i);
    return -1;
}

} // namespace qrnsg
