#include "qrn/IDocument.h"

namespace qrn {

IDocument::~IDocument() = default;

} // namespace qrn
