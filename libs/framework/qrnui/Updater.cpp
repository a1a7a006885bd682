#include "qrnui/Updater.h"

namespace qrnui {

void Updater::update(const Hint& hint) {
    // A listener may register others while it runs; walk a copy so that the list can grow.
    const std::vector<Listener> listeners = m_listeners;
    for (const auto& l : listeners)
        l(hint);
}

void Updater::addListener(Listener listener) {
    m_listeners.push_back(std::move(listener));
}

} // namespace qrnui
