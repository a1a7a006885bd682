#pragma once

#include "qrnsg/IPairFunctor.h"
#include "qrnsg/qrnsg_export.h"

#include <unordered_set>

namespace qrnsg {

// Sets the visible bit of every primitive except the hidden ones.
class QRNSG_EXPORT VisibilityFunctor : public IPairFunctor {
public:
    enum : unsigned char { VISIBLE = 2 };

    void apply(int id, const TransformPair& transform, unsigned char& flags) const override;
    void hide(int id) { m_hidden.insert(id); }
    void show(int id) { m_hidden.erase(id); }
    void showAll() { m_hidden.clear(); }
    bool isHidden(int id) const { return m_hidden.count(id) != 0; }

private:
    std::unordered_set<int> m_hidden;
};

} // namespace qrnsg
