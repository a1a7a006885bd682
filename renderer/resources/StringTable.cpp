#include "qrngl/resources/StringTable.h"

#include "qrnsgutils/ResourceLoader.h"

namespace qrngl {

namespace {
const char kMarker = 0; // any address inside the library
} // namespace

const void* libraryModule() {
    return qrnsgutils::ResourceLoader::moduleOf(&kMarker);
}

} // namespace qrngl
