#include "qrngl/FilterResult.h"

namespace qrngl {

void FilterResult::add(unsigned int name, float depth) {
    m_names.push_back(name);
    m_depths.push_back(depth);
}

void FilterResult::clear() {
    m_names.clear();
    m_depths.clear();
}

} // namespace qrngl
