#pragma once

#include "qrnui/IFrame.h"
#include "qrnui/Updater.h"

#include <memory>

namespace qrnviewer {

// The viewer's frame around its one document: an undo stack for the camera moves and an
// update notifier the host listens to. The viewer shows 3D models only.
class HostFrame : public qrnui::IFrame {
public:
    explicit HostFrame(std::shared_ptr<qrn::IDocument> document);

    std::shared_ptr<qrn::IDocument> getDocument() const override { return m_document; }
    std::shared_ptr<qrnui::UndoStack> getUndoStack() const override { return m_undo; }
    std::shared_ptr<qrn::IUpdater> getUpdater() const override { return m_updater; }
    bool is2DViewer() const override { return false; }

    const std::shared_ptr<qrnui::Updater>& updater() const { return m_updater; }

private:
    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<qrnui::UndoStack> m_undo;
    std::shared_ptr<qrnui::Updater> m_updater;
};

} // namespace qrnviewer
