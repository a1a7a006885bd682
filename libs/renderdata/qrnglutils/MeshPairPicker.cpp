#include "qrnglutils/MeshPairPicker.h"

#include "qrnglutils/ScopedTransform.h"
#include "qrnsgutils/InstanceWalker.h"

namespace qrnglutils {

using qrnsg::EntityNames;
using qrnsgutils::InstanceWalker;

void MeshPairPicker::draw(const PickVisitor& visitor, const qrngl::NamesInitializer& names) {
    const auto& entries = visitor.strips().meshes;
    const auto* topology = visitor.topology();
    InstanceWalker::walk(
        visitor.rt().meshes, entries.size(), [&](const InstanceWalker::Instance& instance) {
            const auto& entry = *entries[static_cast<std::size_t>(instance.drawable)];
            ScopedTransform place(instance);
            const auto* owner = topology ? topology->owner(instance.id) : nullptr;
            const std::vector<int>* faces = nullptr;
            const auto& ranges =
                owner ? visitor.faceRanges(
                            topology->nodes[static_cast<std::size_t>(owner->node)].part,
                            owner->slot, &faces)
                      : visitor.faceRanges(-1, 0, &faces);
            if (ranges.empty()) {
                // A mesh of no part (a PMI item's filled texts) picks as the item's lines do.
                names.load(owner ? 0u : EntityNames::edgeLike(instance.id));
                entry.render();
                return;
            }
            entry.renderRanges(ranges, [&](std::size_t i) {
                names.load(topology->name(owner->node, EntityNames::FACE, (*faces)[i]));
            });
        });
}

} // namespace qrnglutils
