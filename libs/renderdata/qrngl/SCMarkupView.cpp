#include "qrngl/SCMarkupView.h"

namespace qrngl {

SCMarkupView::SCMarkupView() : qrnsg::Schema(qrnsg::SCHEMA_MARKUP_VIEW) {}

std::shared_ptr<qrnsg::Schema> SCMarkupView::clone() const {
    return std::make_shared<SCMarkupView>(*this);
}

void SCMarkupView::clear() {
    shown.clear();
}

} // namespace qrngl
