#include "qrnglutils/PolylinePairPicker.h"

#include "qrnglutils/PolylineStripEntry.h"
#include "qrnglutils/ScopedTransform.h"
#include "qrnsgutils/InstanceWalker.h"

namespace qrnglutils {

using qrnsg::EntityNames;
using qrnsgutils::InstanceWalker;

void PolylinePairPicker::draw(const PickVisitor& visitor, const qrngl::NamesInitializer& names) {
    const auto& entries = visitor.strips().polylines;
    const auto* topology = visitor.topology();
    std::vector<qrngl::IStripEntry::Range> ranges;
    std::vector<unsigned char> colours;
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
            if (const auto* lines = dynamic_cast<const PolylineStripEntry*>(&entry);
                lines && names.mode() == qrngl::NamesInitializer::COLOUR) {
                // One draw for all edges: each strip's points in its edge's colour.
                colours.assign(4 * lines->pointCount(), 0);
                const auto& firsts = lines->stripFirsts();
                const auto& counts = lines->stripCounts();
                for (std::size_t e = 0; e < edges.size(); ++e) {
                    const std::size_t s = edges[e].strip;
                    if (s >= firsts.size())
                        continue;
                    const unsigned int name =
                        topology->name(owner->node, EntityNames::EDGE, static_cast<int>(e));
                    for (int p = firsts[s]; p < firsts[s] + counts[s]; ++p)
                        qrngl::NamesInitializer::toColour(
                            name, &colours[4 * static_cast<std::size_t>(p)]);
                }
                lines->renderColoured(colours);
                return;
            }
            ranges.resize(edges.size());
            for (std::size_t e = 0; e < edges.size(); ++e)
                ranges[e] = {edges[e].strip, 1};
            entry.renderRanges(ranges, [&](std::size_t i) {
                names.load(topology->name(owner->node, EntityNames::EDGE, static_cast<int>(i)));
            });
        });
}

} // namespace qrnglutils
