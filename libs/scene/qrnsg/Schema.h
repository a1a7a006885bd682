#pragma once

#include "qrnsg/qrnsg_export.h"

#include <memory>

namespace qrnsg {

// Document component numbers, as the document's getSchema takes them.
enum SchemaType : short {
    SCHEMA_SCENE = 0,
    SCHEMA_SCENE_RT = 1,
    SCHEMA_RENDERER = 2,
    SCHEMA_PMI = 3,
    SCHEMA_TEMP_GRAPHICS = 7,
    SCHEMA_INFO = 8,
    SCHEMA_MEASURE = 9,
    SCHEMA_VIEW = 10,
    SCHEMA_ANIMATION = 11,
    SCHEMA_SCENE_TOPO = 12,
    SCHEMA_SCENE_RES = 13,
    SCHEMA_STRIP_RENDERER = 14,
    SCHEMA_LIST_RENDERER = 15,
    SCHEMA_CLIPPING = 17,
    SCHEMA_RENDER_INFRA = 18,
    SCHEMA_APPLICATION = 19,
    SCHEMA_TRIAD = 21,
    SCHEMA_MARKUP = 23,
    SCHEMA_MARKUP_VIEW = 26,
    // The clip data of the sectioning are made through the factory chain as types 30 and 31.
    SCHEMA_PLANE_CLIP_DATA = 30,
    SCHEMA_NODE_CLIP_DATA = 31,
    // Not one of the renderer's: past the numbers it knows.
    SCHEMA_SCENE_2D = 32
};

// Base of every document component: a typed piece of the document, fetched by its number.
class QRNSG_EXPORT Schema {
public:
    explicit Schema(short type);
    Schema(const Schema&) = default;
    Schema& operator=(const Schema&) = default;
    virtual ~Schema();

    virtual short type() const;
    // A deep copy of the component (used to snapshot and restore document state).
    virtual std::shared_ptr<Schema> clone() const = 0;
    // Drops the component's content, keeping the component itself.
    virtual void clear() = 0;
    // Lets go of what ties the component to its host as the document closes: GL objects (in
    // the context current then), tools, canvases. Nothing by default.
    virtual void close();

private:
    short m_type;
};

} // namespace qrnsg
