#pragma once

#include "qrngl/qrngl_export.h"

// The library's string table: the ids, and the module to read it from with
// qrnsgutils::ResourceLoader::getString.
namespace qrngl {

enum StringId : unsigned int {
    IDS_LIBRARY = 101,
    IDS_UNICODE_FONT = 102, // the face of characters the outline font lacks
    IDS_OUTLINE_FONT = 103, // the face of the 3D texts
    IDS_DIMENSION = 104,
    IDS_ANGLE_WITH_PLANE = 105,
    IDS_AREA = 106,
    IDS_CENTER = 107
};

// This library's module, as qrnsgutils::ResourceLoader::getString takes it.
QRNGL_EXPORT const void* libraryModule();

} // namespace qrngl
