#include "qrnglutils/VertexPairPicker.h"

#include "qrnglutils/PolylineStripEntry.h"
#include "qrnglutils/ScopedTransform.h"
#include "qrnsgutils/InstanceWalker.h"

namespace qrnglutils {

using qrnsg::EntityNames;
using qrnsgutils::InstanceWalker;

void VertexPairPicker::draw(const PickVisitor& visitor, const qrngl::NamesInitializer& names) {
    const auto& entries = visitor.strips().points;
    const auto* topology = visitor.topology();
    if (!topology)
        return;
    std::vector<qrngl::IStripEntry::Range> ranges;
    std::vector<unsigned char> colours;
    InstanceWalker::walk(
        visitor.rt().points, entries.size(), [&](const InstanceWalker::Instance& instance) {
            const auto* owner = topology->owner(instance.id);
            const auto* part = owner ? topology->partOf(owner->node) : nullptr;
            if (!part)
                return;
            const auto count = static_cast<unsigned int>(part->entities.vertices.size());
            const auto& entry = *entries[static_cast<std::size_t>(instance.drawable)];
            if (const auto* points = dynamic_cast<const PolylineStripEntry*>(&entry);
                points && names.mode() == qrngl::NamesInitializer::COLOUR &&
                points->pointCount() == count) {
                // One draw for all vertices, each in its own colour.
                colours.assign(4 * count, 0);
                for (unsigned int v = 0; v < count; ++v)
                    qrngl::NamesInitializer::toColour(
                        topology->name(owner->node, EntityNames::POINT, static_cast<int>(v)),
                        &colours[4 * v]);
                ScopedTransform place(instance);
                points->renderColoured(colours);
                return;
            }
            ranges.resize(count);
            for (unsigned int v = 0; v < count; ++v)
                ranges[v] = {v, 1};
            ScopedTransform place(instance);
            entries[static_cast<std::size_t>(instance.drawable)]->renderRanges(
                ranges, [&](std::size_t i) {
                    names.load(
                        topology->name(owner->node, EntityNames::POINT, static_cast<int>(i)));
                });
        });
}

} // namespace qrnglutils
