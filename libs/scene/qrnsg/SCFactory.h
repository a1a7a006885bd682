#pragma once

#include "qrnsg/IFactory.h"
#include "qrnsg/qrnsg_export.h"

namespace qrnsg {

// The data library's link of the factory chain: makes the scene data components and, as the
// usual end of a chain, answers every other type with an empty pointer (or hands it on to a
// next link when one is given).
class QRNSG_EXPORT SCFactory : public IFactory {
public:
    explicit SCFactory(std::shared_ptr<IFactory> next = nullptr);
    std::shared_ptr<Schema> create(short type) override;

private:
    std::shared_ptr<IFactory> m_next;
};

} // namespace qrnsg
