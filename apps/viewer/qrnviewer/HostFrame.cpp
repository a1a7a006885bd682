#include "qrnviewer/HostFrame.h"

namespace qrnviewer {

HostFrame::HostFrame(std::shared_ptr<qrn::IDocument> document)
    : m_document(std::move(document)), m_undo(std::make_shared<qrnui::UndoStack>()),
      m_updater(std::make_shared<qrnui::Updater>()) {}

} // namespace qrnviewer
