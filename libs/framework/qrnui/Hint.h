#pragma once

#include "qrn/IDocument.h"
#include "qrnui/qrnui_export.h"

#include <memory>

namespace qrnui {

// An update hint: a code saying what changed, and the document it changed in.
class QRNUI_EXPORT Hint {
public:
    Hint(short code, std::shared_ptr<qrn::IDocument> document);

    short code() const { return m_code; }
    const std::shared_ptr<qrn::IDocument>& document() const { return m_document; }

private:
    short m_code;
    std::shared_ptr<qrn::IDocument> m_document;
};

} // namespace qrnui
