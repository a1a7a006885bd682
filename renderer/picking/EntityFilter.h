#pragma once

#include "qrngl/IFilter.h"
#include "qrngl/IPickCanvas.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// A filter for the entity kinds of a mask: NEAREST keeps the one nearest hit (the first of
// equal depths: the canvases order hits by nearness to the pick point), ALL keeps every hit
// once. Names that name no entity are dropped.
class QRNGL_EXPORT EntityFilter : public IFilter {
public:
    enum Mode { NEAREST, ALL };
    EntityFilter(unsigned short type, Mode mode) : m_type(type), m_mode(mode) {}

    // The name of the entity of the mask nearest to a window point, picked through the
    // helper on the canvas; 0 for none.
    static unsigned int nearest(const std::shared_ptr<IPickCanvas>& canvas, unsigned short type,
                                int x, int y, int size);
    // The names of every entity of the mask a window rectangle gives, through the helper on
    // the renderer's pick canvas.
    static std::vector<unsigned int> inside(std::shared_ptr<SCRenderer>& renderer,
                                            unsigned short type, int x0, int y0, int x1, int y1);

    unsigned short& type() override { return m_type; }
    void filter(const std::vector<PickResult>& hits) override;
    void setMode(Mode mode) { m_mode = mode; }

private:
    bool wanted(unsigned int name) const;

    unsigned short m_type;
    Mode m_mode;
};

} // namespace qrngl
