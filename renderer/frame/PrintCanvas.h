#pragma once

#include "qrngl/frame/CanvasBase.h"
#include "qrngl/qrngl_export.h"

#include <memory>
#include <vector>

namespace qrngl {

// Prints a document: draws the frame of another canvas (the document's own kind) into an
// off-screen context, a pixel buffer or a bitmap, and keeps the picture. Every OnDraw draws,
// whether invalidated or not, and reads the frame back. With a transparent background the
// frame is drawn twice, on black and on white: what differs between the two is what lets the
// background through, so coverage becomes alpha and antialiased or transparent parts keep
// their true colours.
class QRNGL_EXPORT PrintCanvas : public CanvasBase<> {
public:
    PrintCanvas(std::shared_ptr<IRenderContext> context, std::shared_ptr<qrn::IDocument> document,
                std::shared_ptr<ICanvas> frame);

    bool OnCreate() override;
    void OnDestroy() override;
    void OnDraw() const override;
    void OnSize(unsigned int x, unsigned int y, unsigned int width, unsigned int height) override;
    void Invalidate() override;

    void setTransparent(bool transparent) { m_transparent = transparent; }
    bool transparent() const { return m_transparent; }

    // The last picture: RGBA, 8 bits a channel, rows from the top; empty before the first
    // OnDraw or when nothing could be drawn.
    const std::vector<unsigned char>& pixels() const { return m_pixels; }
    unsigned int pictureWidth() const { return m_width; }
    unsigned int pictureHeight() const { return m_height; }

private:
    // Draws one frame on a grey background (the renderer's own for a negative value) and reads
    // it into rgba; false when nothing could be read.
    bool drawOn(float background, std::vector<unsigned char>& rgba) const;

    std::shared_ptr<ICanvas> m_frame;
    bool m_transparent = false;
    mutable std::vector<unsigned char> m_pixels;
    mutable unsigned int m_width = 0;
    mutable unsigned int m_height = 0;
};

} // namespace qrngl
