#include "qrnui/Updater.h"
#include "qrn/Document.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

TEST(Updater, ListenersHearEachHintInRegistrationOrder) {
    auto doc = std::make_shared<qrn::Document>(nullptr);
    qrnui::Updater updater;
    std::vector<int> calls;
    for (int i = 0; i < 3; ++i)
        updater.addListener([&calls, i, doc](const qrnui::Hint& h) {
            calls.push_back(i * 100 + h.code() + (h.document() == doc ? 10 : 0));
        });
    qrn::IUpdater& base = updater;
    base.update(qrnui::Hint(7, doc));
    base.update(qrnui::Hint(8, nullptr));
    EXPECT_EQ(calls, (std::vector<int>{17, 117, 217, 8, 108, 208}));

    // A listener may register others while notified; they hear from the next hint on.
    int late = 0;
    updater.addListener([&](const qrnui::Hint&) {
        for (int i = 0; i < 16; ++i)
            updater.addListener([&late](const qrnui::Hint&) { ++late; });
    });
    updater.update(qrnui::Hint(1, nullptr));
    EXPECT_EQ(late, 0);
    updater.update(qrnui::Hint(2, nullptr));
    EXPECT_EQ(late, 16);
}
