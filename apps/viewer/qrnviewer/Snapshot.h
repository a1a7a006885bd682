#pragma once

#include "qrn/IDocument.h"
#include "qrngl/ICanvasFactory.h"
#include "qrngl/IRenderContext.h"

#include <functional>

#include <memory>
#include <string>

namespace qrnviewer {

class RendererPlugins;

// Draws one frame of a document off screen through the print canvas of the renderer plug-in
// that draws it, and writes it as a PNG. The frame goes into a pixel buffer where an X display
// is there (any size the driver's buffers allow, multisampled on request) and into the
// headless bitmap context otherwise.
class Snapshot {
public:
    struct Settings {
        unsigned int width = 1024;
        unsigned int height = 768;
        bool multisample = false;
        // Alpha 0 where the background shows.
        bool transparent = false;
        // Runs with the context made and the view sized, before the frame (picks).
        std::function<void(const std::shared_ptr<qrngl::IRenderContext>&, qrngl::ICanvasFactory&)>
            beforeFrame;
    };

    // False with a reason in error when no plug-in draws the document, no context could be
    // made or the file not written. An empty path draws the frame and writes nothing. how, when
    // given, tells what drew it ("pixel buffer, 4 samples").
    static bool write(const std::shared_ptr<qrn::IDocument>& document, const Settings& settings,
                      const RendererPlugins& plugins, const std::string& path, std::string& error,
                      std::string* how = nullptr);
    // An opaque picture of width x height through the process's plug-ins.
    static bool write(const std::shared_ptr<qrn::IDocument>& document, unsigned int width,
                      unsigned int height, const std::string& path, std::string& error);
};

} // namespace qrnviewer
