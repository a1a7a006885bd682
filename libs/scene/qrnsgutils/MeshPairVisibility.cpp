#include "qrnsgutils/MeshPairVisibility.h"

namespace qrnsgutils {

using qrnsg::RTState;

MeshPairVisibility::MeshPairVisibility(std::shared_ptr<const qrnsg::SCSceneRT> rt)
    : m_rt(std::move(rt)) {}

bool MeshPairVisibility::visible(int id) const {
    auto rt = m_rt.lock();
    const unsigned char* flags = rt ? rt->meshes.flags.find(id) : nullptr;
    return flags && (*flags & RTState::VISIBLE);
}

void MeshPairVisibility::apply(int id, const qrnsg::TransformPair&, unsigned char& flags) const {
    if (visible(id))
        flags = static_cast<unsigned char>(flags | RTState::VISIBLE);
    else
        flags = static_cast<unsigned char>(flags & ~RTState::VISIBLE);
}

} // namespace qrnsgutils
