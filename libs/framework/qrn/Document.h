#pragma once

#include "qrn/IDocument.h"
#include "qrn/qrn_export.h"
#include "qrnsg/IFactory.h"

#include <map>
#include <memory>

namespace qrn {

// A document that makes its components through a factory chain and owns them.
class QRN_EXPORT Document : public IDocument {
public:
    explicit Document(std::shared_ptr<qrnsg::IFactory> factory);

    std::shared_ptr<qrnsg::Schema> getSchema(short type) override;

    // Makes the component through the factory chain unless the document has it already;
    // returns it, or an empty pointer when no factory knows the type.
    std::shared_ptr<qrnsg::Schema> addSchema(short type);
    // Puts a component made elsewhere in its place (by its own type), replacing any other.
    void setSchema(const std::shared_ptr<qrnsg::Schema>& schema);
    bool removeSchema(short type);
    // Releases every component. Components hold tools, canvases and renderers that hold the
    // document back, so a host that is done with a document closes it (with the context of
    // its canvases current) to get all of it back.
    void close();
    bool hasSchema(short type) const { return m_schemas.count(type) != 0; }

    // The component cast to its class, or empty when absent or of another class.
    template <class T>
    std::shared_ptr<T> get(short type) {
        return std::dynamic_pointer_cast<T>(getSchema(type));
    }

private:
    std::shared_ptr<qrnsg::IFactory> m_factory;
    std::map<short, std::shared_ptr<qrnsg::Schema>> m_schemas;
};

} // namespace qrn
