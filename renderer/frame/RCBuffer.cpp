// The pixel-buffer context's parts that are the same on every platform.
#include "qrngl/frame/RCBuffer.h"

namespace qrngl {

RCBuffer::RCBuffer(unsigned int width, unsigned int height, bool multisample,
                   std::shared_ptr<IRenderContext> parent)
    : m_width(width), m_height(height), m_pbuffer(nullptr), m_dc(nullptr), m_rc(nullptr),
      m_parent(std::move(parent)), m_multisample(multisample) {}

RCBuffer::RCBuffer(const RCBuffer& other) = default;
RCBuffer& RCBuffer::operator=(const RCBuffer& other) = default;

RCBuffer::RCBuffer(RCBuffer&& other) noexcept
    : m_width(other.m_width), m_height(other.m_height), m_pbuffer(other.m_pbuffer),
      m_dc(other.m_dc), m_rc(other.m_rc), m_parent(std::move(other.m_parent)),
      m_multisample(other.m_multisample) {
    other.m_pbuffer = nullptr;
    other.m_dc = nullptr;
    other.m_rc = nullptr;
}

RCBuffer& RCBuffer::operator=(RCBuffer&& other) noexcept {
    if (this != &other) {
        m_width = other.m_width;
        m_height = other.m_height;
        m_pbuffer = other.m_pbuffer;
        m_dc = other.m_dc;
        m_rc = other.m_rc;
        m_parent = std::move(other.m_parent);
        m_multisample = other.m_multisample;
        other.m_pbuffer = nullptr;
        other.m_dc = nullptr;
        other.m_rc = nullptr;
    }
    return *this;
}

// Copies share the handles: the one that is destroyed releases them.
RCBuffer::~RCBuffer() = default;

HDC RCBuffer::currentDC() const {
    return m_dc;
}

HGLRC RCBuffer::currentGLRC() const {
    return m_rc;
}

} // namespace qrngl
