#include "qrnglutils/PolylinePairPicker.h"

#include "qrnglutils/ScopedTransform.h"
#include "qrnsgutils/InstanceWalker.h"

namespace qrnglutils {

using qrnsg::EntityNames;
using qrnsgutils::InstanceWalker;

void PolylinePairPicker::draw(const PickVisitor& visitor, const qrngl::NamesInitializer& names) {
    const auto& entries = visitor.strips().polylines;
    const auto* topology = visitor.topology();
    std::vector<qrngl::IStripEntry::Range> ranges;
    InstanceWalker::walk(
        visitor.rt().polylines, entries.size(), [&](const InstanceWalker::Instance& instance) {
            const auto& entry = *entries[static_cast<std::size_t>(instance.drawable)];
            ScopedTransform place(instance);
            const auto* owner = topology ? topology->owner(instance.id) : nullptr;
            const auto* part = owner ? topology->partOf(owner->node) : nullptr;
            if (!part || part->entities.edges.empty()) {
                names.load(owner ? 0u : EntityNames::edgeLike(instance.id));
                entry.render();
                return;
            }
            const auto& edges = part->entities.edges;
            ranges.resize(edges.size());
            for (std::size_t e = 0; e < edges.size(); ++e)
                ranges[e] = {edges[e].strip, 1};
            entry.renderRanges(ranges, [&](std::size_t i) {
                names.load(topology->name(owner->node, EntityNames::EDGE, static_cast<int>(i)));
            });
        });
}

} // namespace qrnglutils
