#include "qrnviewer/RendererPlugins.h"

#include "qrngl/frame/CanvasFactoryCreator.h"
#include "qrnplatform/Environment.h"
#include "qrnplatform/Settings.h"

#include <algorithm>
#include <iterator>
#include <system_error>

namespace qrnviewer {

namespace {

bool isLibrary(const std::filesystem::path& path) {
    const std::string extension = path.extension().string();
    return extension == ".so" || extension == ".dll";
}

// The libraries of a folder by file name; none for a folder that is not there.
std::vector<std::filesystem::path> librariesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> found;
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end;
         it.increment(error)) {
        std::error_code kind;
        if (it->is_regular_file(kind) && isLibrary(it->path()))
            found.push_back(it->path());
    }
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a.filename() < b.filename(); });
    return found;
}

} // namespace

std::vector<std::filesystem::path> RendererPlugins::defaultFolders() {
    std::vector<std::filesystem::path> folders;
    std::wstring configured;
    if (qrnplatform::Settings(L"Settings\\Renderer").readString(L"Plugins", configured) &&
        !configured.empty())
        folders.emplace_back(configured);
    const std::filesystem::path executable(qrnplatform::Environment::executablePath());
    if (!executable.empty())
        folders.push_back(executable.parent_path());
    return folders;
}

RendererPlugins::RendererPlugins() : RendererPlugins(defaultFolders()) {}

RendererPlugins::RendererPlugins(std::vector<std::filesystem::path> folders)
    : m_manager(std::make_shared<qrngl::CanvasFactoryManager>()), m_folders(std::move(folders)) {
    qrngl::CanvasFactoryCreator load(m_manager);
    for (const auto& folder : m_folders)
        for (const auto& library : librariesIn(folder))
            load(library.wstring());
}

const RendererPlugins& RendererPlugins::shared() {
    static const RendererPlugins plugins;
    return plugins;
}

std::shared_ptr<qrngl::ICanvasFactory>
RendererPlugins::factoryFor(const std::shared_ptr<qrn::IDocument>& document) const {
    return m_manager->get(document);
}

std::size_t RendererPlugins::size() const {
    return static_cast<std::size_t>(
        std::distance(static_cast<const qrngl::CanvasFactoryManager&>(*m_manager).begin(),
                      static_cast<const qrngl::CanvasFactoryManager&>(*m_manager).end()));
}

std::string RendererPlugins::noFactoryMessage() const {
    std::string folders;
    for (const auto& folder : m_folders)
        folders += (folders.empty() ? "" : ", ") + folder.string();
    return "no renderer plug-in can draw this document (" + std::to_string(size()) +
           " loaded from " + (folders.empty() ? std::string("no folder") : folders) + ")";
}

} // namespace qrnviewer
