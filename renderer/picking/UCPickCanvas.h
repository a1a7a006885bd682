#pragma once

#include "qrngl/IPickCanvas.h"
#include "qrngl/frame/CanvasBase.h"
#include "qrngl/qrngl_export.h"

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace qrngl {

// Picks by drawing entity names as colours into a frame buffer of its own and reading the
// pixels back: each pixel is one 32-bit name, its top four bits the entity kind. Only what is
// seen is picked. The pass turns multisampling, blending, lighting, dithering, fog, smoothing
// and texturing off and leaves the context as it found it, frame-buffer bindings included.
class QRNGL_EXPORT UCPickCanvas : public CanvasBase<IPickCanvas> {
public:
    UCPickCanvas(std::shared_ptr<IRenderContext> context, std::shared_ptr<qrn::IDocument> document);
    ~UCPickCanvas() override;

    void Invalidate() override;
    void Set(int x, int y, int size, unsigned short type) override;
    // The one hit near the pick point: edges and points near it before what lies under it.
    const std::vector<PickResult>& Get() const override;
    void GetPoints(int x, int y, std::vector<PickResult>& hits) const override;
    void SetPickBox(int width, int height, int size, unsigned short type) override;
    // Every entity seen in the rectangle, once each, the nearest to its centre first.
    void GetPickBox(int width, int height, std::vector<PickResult>& hits) override;

protected:
    // Draws the id pass into the frame buffer, over the whole viewport or, when scissor is
    // given, only inside it (x, y, width, height in OpenGL window coordinates); calls read
    // with the frame buffer bound. False when nothing could be drawn.
    bool idPass(const int* scissor, const std::function<void()>& read) const;
    // Reads a rectangle of names (OpenGL window coordinates) from the bound frame buffer into
    // out, names outside the viewport 0.
    void readNames(int x, int y, int width, int height, std::vector<std::uint32_t>& out) const;
    // Frees the frame buffer; needs the context it was made in.
    void releaseFrameBuffer() const;
    bool accepts(std::uint32_t name, bool faces) const;
    void walk(const std::vector<std::uint32_t>& square, int size,
              std::vector<PickResult>& hits) const;
    unsigned int viewportHeight() const;

    int m_x = 0;
    int m_y = 0;
    int m_size = -1;
    unsigned short m_type = 0;
    bool m_box = false;
    int m_boxWidth = 0;
    int m_boxHeight = 0;
    mutable std::vector<std::uint32_t> m_square; // 2 size x 2 size names around the pick point
    mutable std::vector<std::uint32_t> m_boxNames;
    mutable std::vector<PickResult> m_hits;
    mutable bool m_stale = true;

private:
    bool bindFrameBuffer(int width, int height) const;
    bool checkIterator(int step, int index, int count) const;

    mutable unsigned int m_fbo = 0;
    mutable unsigned int m_colour = 0;
    mutable unsigned int m_depth = 0;
    mutable int m_fboWidth = 0;
    mutable int m_fboHeight = 0;
};

} // namespace qrngl
