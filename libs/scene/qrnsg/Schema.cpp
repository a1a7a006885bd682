#include "qrnsg/Schema.h"

namespace qrnsg {

Schema::Schema(short type) : m_type(type) {}

Schema::~Schema() = default;

short Schema::type() const {
    return m_type;
}

void Schema::close() {}

} // namespace qrnsg
