#pragma once

#include "qrngl/qrngl_export.h"

#include <vector>

namespace qrngl {

// What the user selected and what the cursor hovers over, as entity names, and the pick mode
// that decides which kind of entity a click takes. Shared by the selection, highlight and
// view tools and the highlight renderer.
class QRNGL_EXPORT SelectionSet {
public:
    // PART takes the whole placed part under the cursor; ANY a face, edge or vertex.
    enum Mode { PART, FACE, EDGE, VERTEX, ANY };

    Mode mode() const { return m_mode; }
    void setMode(Mode mode) { m_mode = mode; }
    // The entity-type mask a pick of this mode draws.
    unsigned short mask() const;

    const std::vector<unsigned int>& selected() const { return m_selected; }
    bool isSelected(unsigned int name) const;
    // Each returns whether the selection changed.
    bool replace(const std::vector<unsigned int>& names);
    bool add(const std::vector<unsigned int>& names);
    bool toggle(unsigned int name);
    bool clear();

    unsigned int hovered() const { return m_hovered; }
    bool setHovered(unsigned int name);

    // Box selection also takes what lies hidden behind other entities.
    bool selectThrough() const { return m_selectThrough; }
    void setSelectThrough(bool on) { m_selectThrough = on; }

private:
    Mode m_mode = PART;
    std::vector<unsigned int> m_selected;
    unsigned int m_hovered = 0;
    bool m_selectThrough = false;
};

} // namespace qrngl
