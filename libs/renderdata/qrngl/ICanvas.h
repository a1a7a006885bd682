#pragma once

#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// Turns a document into pixels on a render context; the host forwards its window's events.
class QRNGLDATA_EXPORT ICanvas {
public:
    ICanvas() = default;
    ICanvas(const ICanvas&) = default;
    ICanvas& operator=(const ICanvas&) = default;
    virtual ~ICanvas();

    virtual bool OnCreate() = 0;
    virtual void OnDestroy() = 0;
    virtual void OnDraw() const = 0;
    virtual void OnSize(unsigned int x, unsigned int y, unsigned int width,
                        unsigned int height) = 0;
    virtual void Invalidate() = 0;

    // Set by the host when it wants to know of the next drawn frame; a canvas clears it after
    // every draw that passed its readiness test.
    unsigned char flag() const { return m_flag; }
    void setFlag(unsigned char flag) const { m_flag = flag; }

protected:
    mutable unsigned char m_flag = 0;
};

} // namespace qrngl
