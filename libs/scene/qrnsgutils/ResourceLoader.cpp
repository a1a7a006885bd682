#include "qrnsgutils/ResourceLoader.h"

#include "qrnplatform/Resources.h"

namespace qrnsgutils {

using qrnplatform::Resources;

const void* ResourceLoader::moduleOf(const void* address) {
    return Resources::moduleOf(address);
}

std::wstring ResourceLoader::getString(const void* module, unsigned int id) {
    return Resources::string(module, id, Resources::userLanguage());
}

std::wstring ResourceLoader::getString(const void* module, unsigned int id,
                                       unsigned short language) {
    return Resources::string(module, id, language);
}

} // namespace qrnsgutils
