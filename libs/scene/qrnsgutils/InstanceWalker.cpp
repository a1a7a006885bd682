#include "qrnsgutils/InstanceWalker.h"

namespace qrnsgutils {

using qrnsg::RTState;

bool InstanceWalker::visible(const RTState& state, int id, std::size_t drawables,
                             Instance& instance, bool shownOnly) {
    const unsigned char* flags = state.flags.find(id);
    if (!flags || (shownOnly && !(*flags & RTState::VISIBLE)))
        return false;
    const qrnsg::TransformPair* pair = state.transforms.find(id);
    if (!pair || pair->second < 0 || static_cast<std::size_t>(pair->second) >= drawables)
        return false;
    const int* material = state.materials.find(id);
    instance.id = id;
    instance.drawable = pair->second;
    instance.material = material ? *material : -1;
    instance.flags = *flags;
    instance.transform = (*flags & RTState::HAS_TRANSFORM) ? &pair->first : nullptr;
    return true;
}

} // namespace qrnsgutils
