#pragma once

#include "qrn/IUpdater.h"
#include "qrnui/Hint.h"
#include "qrnui/qrnui_export.h"

#include <functional>
#include <vector>

namespace qrnui {

// Hands every hint to the listeners the host registered, in registration order.
class QRNUI_EXPORT Updater : public qrn::IUpdater {
public:
    using Listener = std::function<void(const Hint&)>;

    void update(const Hint& hint) override;
    void addListener(Listener listener);

private:
    std::vector<Listener> m_listeners;
};

} // namespace qrnui
