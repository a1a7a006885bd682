#pragma once

#include "qrn2d/qrn2d_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/Schema.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace qrn2d {

struct Sheet {
    qrnmath::Vec3 lowerLeft;
    qrnmath::Vec3 upperRight;
    qrnmath::Vec4 color{0.0f, 0.0f, 0.0f, 1.0f};
    std::wstring name;
};

struct View {
    std::wstring name;
};

// One drawn element of a sheet. Kinds 0 to 3, 8 and 9 are line strips, 4 a filled triangle
// strip; other kinds (hatch boundaries, texts, images) are drawn elsewhere.
struct Entity {
    std::vector<qrnmath::Vec3> points; // x and y are drawn
    std::uint32_t kind = 0;
    double lineWidth = 1.0;
    bool stipple = false;
    std::uint16_t stipplePattern = 0xFFFF;
};

// A 2D drawing document: sheets, the views on each sheet and the entities of each view.
class QRN2D_EXPORT SCScene2D : public qrnsg::Schema {
public:
    SCScene2D();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    std::vector<Sheet> sheets;
    std::map<int, std::vector<int>> sheetViews;
    std::vector<View> views;
    std::map<int, std::vector<int>> viewEntities;
    std::vector<Entity> entities;
    std::map<int, int> entityColors;
    std::vector<qrnmath::Vec4> colors;
    float maxDiagonal = 0.0f; // the largest sheet diagonal drawn so far

    int addSheet(const Sheet& sheet);
    int addView(int sheet, const std::wstring& name);
    // Adds a colour to the colour table and returns its index.
    int addColor(const qrnmath::Vec4& color);
    int addEntity(int view, const Entity& entity, int colorIndex);
};

} // namespace qrn2d
