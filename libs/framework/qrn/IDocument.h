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

// The component of that number as its class: empty without a document, without the component
// or when it is of another class. Fetched anew by every operation, never kept.
template <class T>
std::shared_ptr<T> component(const std::shared_ptr<IDocument>& document, short type) {
    return document ? std::dynamic_pointer_cast<T>(document->getSchema(type)) : nullptr;
}

} // namespace qrn
