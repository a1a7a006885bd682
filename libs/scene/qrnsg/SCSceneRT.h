#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/Container.h"
#include "qrnsg/IPairFunctor.h"
#include "qrnsg/PairT.h"
#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

#include <array>
#include <memory>
#include <vector>

namespace qrnsg {

// Run-time state of one kind of primitive (meshes, polylines, texts or points), keyed by
// primitive id.
struct QRNSG_EXPORT RTState {
    // Flag bits. Enumerators rather than static members: those do not cross a DLL boundary.
    enum : unsigned char {
        HAS_TRANSFORM = 1,
        VISIBLE = 2,
        ANCHORED = 4,     // texts: turned to face the viewer
        CONSTANT_SIZE = 8 // texts: kept at one size on screen
    };

    // Per primitive: its own transform (column-major) and the index of its drawable.
    Container<int, TransformPair> transforms;
    Container<int, unsigned char> flags;
    std::shared_ptr<IPairFunctor> functor;
    Container<int, int> materials; // material index per primitive
    std::vector<int> drawOrder;    // the primitive ids to draw, in order

    // Adds a primitive drawn by drawable index, visible, with the given material index.
    void add(int id, int drawable, int material, unsigned char extraFlags = 0);
    // Shows or hides a primitive, keeping a visibility functor (which sets the bit again
    // every frame) of the same mind; false when it was so already or is unknown.
    bool setVisible(int id, bool shown);
    void clear();
};

// Per material index of the mesh pass: the 4-byte record's first byte has bit 0 set for a
// transparent material.
struct MeshMaterialRecord {
    enum : unsigned char { TRANSPARENT = 1 };
    std::array<unsigned char, 4> bytes{{0, 0, 0, 0}};
    bool isTransparent() const { return (bytes[0] & TRANSPARENT) != 0; }
};

class QRNSG_EXPORT SCSceneRT : public Schema {
public:
    SCSceneRT();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;

    RTState meshes;
    RTState polylines;
    RTState texts;
    RTState points;
    // The run-time state of a kind of primitive.
    enum Kind { MESHES, POLYLINES, TEXTS, POINTS };
    RTState& of(Kind kind) {
        return kind == MESHES      ? meshes
               : kind == POLYLINES ? polylines
               : kind == TEXTS     ? texts
                                   : points;
    }

    // Tables of the mesh pass, indexed by material index.
    std::vector<int> meshSceneMaterials; // index into SCScene::materials, -1 for none
    std::vector<int> meshTextures;       // index into the renderer's textures, -1 for none
    std::vector<MeshMaterialRecord> meshMaterialRecords;

    // Per node of the model's structure: two flag sets, by node index. The first says which
    // nodes are shown (bit 0), the second which stand moved from where the file placed them
    // (bit 0); the home view sets every bit of the first and clears the second.
    std::vector<unsigned char> nodeShown;
    std::vector<unsigned char> nodeMoved;

    // Adds a mesh material index; returns it.
    int addMeshMaterial(int sceneMaterial, bool transparent, int texture = -1);
    // Reorders the mesh draw order by material index, opaque materials first, keeping the
    // relative order of meshes that share a material.
    void sortMeshDrawOrder();
};

} // namespace qrnsg
