#include "qrn/Document.h"

#include <iterator>

namespace qrn {

Document::Document(std::shared_ptr<qrnsg::IFactory> factory) : m_factory(std::move(factory)) {}

std::shared_ptr<qrnsg::Schema> Document::getSchema(short type) {
    auto it = m_schemas.find(type);
    return it == m_schemas.end() ? nullptr : it->second;
}

std::shared_ptr<qrnsg::Schema> Document::addSchema(short type) {
    auto it = m_schemas.find(type);
    if (it != m_schemas.end())
        return it->second;
    if (!m_factory)
        return nullptr;
    auto schema = m_factory->create(type);
    if (schema)
        m_schemas[type] = schema;
    return schema;
}

void Document::setSchema(const std::shared_ptr<qrnsg::Schema>& schema) {
    if (schema)
        m_schemas[schema->type()] = schema;
}

bool Document::removeSchema(short type) {
    return m_schemas.erase(type) != 0;
}

void Document::close() {
    // Out of the map first: a component's last owner may look the document up as it goes.
    std::map<short, std::shared_ptr<qrnsg::Schema>> schemas;
    schemas.swap(m_schemas);
    for (auto& entry : schemas)
        if (entry.second)
            entry.second->close();
    while (!schemas.empty())
        schemas.erase(std::prev(schemas.end()));
}

} // namespace qrn
