#include "qrnui/Updater.h"

namespace qrnui {

void Updater::update(const Hint& hint) {
    for (const auto& l : m_listeners)
        l(hint);
}

void Updater::addListener(Listener listener) {
    m_listeners.push_back(std::move(listener));
}

} // namespace qrnui
