#pragma once

#include "qrn/IDocument.h"
#include "qrngl/frame/CanvasFactoryManager.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace qrnviewer {

// The renderer plug-ins the viewer draws with, loaded through the library's factory creator:
// first those in the folder that the "Plugins" value of the "Settings\Renderer" key names,
// then those beside the executable; within a folder by file name. The first plug-in that can
// draw a document draws it. Plug-ins stay loaded while this object lives: canvases made by
// them, and documents that hold renderers they made (a drawing's sheet view), must be
// released first.
class RendererPlugins {
public:
    // Loads from the folders named above.
    RendererPlugins();
    // Loads from these folders, in this order.
    explicit RendererPlugins(std::vector<std::filesystem::path> folders);

    // The process's plug-ins from the usual folders, loaded on first use.
    static const RendererPlugins& shared();
    static std::vector<std::filesystem::path> defaultFolders();

    // The factory for the document; empty when no plug-in can draw it.
    std::shared_ptr<qrngl::ICanvasFactory>
    factoryFor(const std::shared_ptr<qrn::IDocument>& document) const;
    // Why there is none: names the folders looked in.
    std::string noFactoryMessage() const;

    std::size_t size() const;
    const std::vector<std::filesystem::path>& folders() const { return m_folders; }

private:
    std::shared_ptr<qrngl::CanvasFactoryManager> m_manager;
    std::vector<std::filesystem::path> m_folders;
};

} // namespace qrnviewer
