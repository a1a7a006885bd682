#pragma once

#include "qrn/qrn_export.h"
#include "qrnsg/Schema.h"

#include <memory>

namespace qrn {

// A document: the viewer's model, made of typed components fetched by number.
class QRN_EXPORT IDocument {
public:
    virtual ~IDocument();
    // The component of that number, or an empty pointer when the document has none.
    virtual std::shared_ptr<qrnsg::Schema> getSchema(short type) = 0;
};

} // namespace qrn
