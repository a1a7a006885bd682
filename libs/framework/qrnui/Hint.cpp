#include "qrnui/Hint.h"

namespace qrnui {

Hint::Hint(short code, std::shared_ptr<qrn::IDocument> document)
    : m_code(code), m_document(std::move(document)) {}

} // namespace qrnui
