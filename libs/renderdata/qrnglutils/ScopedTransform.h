#pragma once

#include "qrnglutils/qrnglutils_export.h"
#include "qrnsgutils/InstanceWalker.h"

namespace qrnglutils {

// Places one walked instance for as long as it lives: its transform multiplied onto the
// model-view matrix, which is restored afterwards; nothing for an instance without one.
class QRNGLUTILS_EXPORT ScopedTransform {
public:
    explicit ScopedTransform(const qrnsgutils::InstanceWalker::Instance& instance);
    ~ScopedTransform();
    ScopedTransform(const ScopedTransform&) = delete;
    ScopedTransform& operator=(const ScopedTransform&) = delete;
    // Whether a transform mirrors what it places (turning its triangles' winding).
    static bool mirrors(const qrnmath::Mat4* transform);

private:
    bool m_pushed;
};

} // namespace qrnglutils
