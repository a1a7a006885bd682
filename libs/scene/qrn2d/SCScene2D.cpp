#include "qrn2d/SCScene2D.h"

namespace qrn2d {

SCScene2D::SCScene2D() : qrnsg::Schema(qrnsg::SCHEMA_SCENE_2D) {}

std::shared_ptr<qrnsg::Schema> SCScene2D::clone() const {
    return std::make_shared<SCScene2D>(*this);
}

void SCScene2D::clear() {
    *this = SCScene2D();
}

int SCScene2D::addSheet(const Sheet& sheet) {
    sheets.push_back(sheet);
    return static_cast<int>(sheets.size()) - 1;
}

int SCScene2D::addView(int sheet, const std::wstring& name) {
    views.push_back(View{name});
    int id = static_cast<int>(views.size()) - 1;
    sheetViews[sheet].push_back(id);
    return id;
}

int SCScene2D::addColor(const qrnmath::Vec4& color) {
    colors.push_back(color);
    return static_cast<int>(colors.size()) - 1;
}

int SCScene2D::addEntity(int view, const Entity& entity, int colorIndex) {
    entities.push_back(entity);
    int id = static_cast<int>(entities.size()) - 1;
    viewEntities[view].push_back(id);
    entityColors[id] = colorIndex;
    return id;
}

} // namespace qrn2d
