#pragma once

#include "qrngl/IFilter.h"
#include "qrngl/qrngl_export.h"

namespace qrngl {

// A filter for the entity kinds of a mask: NEAREST keeps the one nearest hit (the first of
// equal depths: the canvases order hits by nearness to the pick point), ALL keeps every hit
// once. Names that name no entity are dropped.
class QRNGL_EXPORT EntityFilter : public IFilter {
public:
    enum Mode { NEAREST, ALL };
    EntityFilter(unsigned short type, Mode mode) : m_type(type), m_mode(mode) {}

    unsigned short& type() override { return m_type; }
    void filter(const std::vector<PickResult>& hits) override;
    void setMode(Mode mode) { m_mode = mode; }

private:
    bool wanted(unsigned int name) const;

    unsigned short m_type;
    Mode m_mode;
};

} // namespace qrngl
