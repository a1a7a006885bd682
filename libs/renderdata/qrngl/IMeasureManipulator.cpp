#include "qrngl/IMeasureManipulator.h"

namespace qrngl {

IMeasureManipulator::IMeasureManipulator(std::shared_ptr<qrn::IDocument> document,
                                         std::shared_ptr<Cursor> cursor,
                                         std::shared_ptr<qrn::IUpdater> updater)
    : IManipulator(std::move(cursor)), m_document(std::move(document)),
      m_updater(std::move(updater)) {}

IMeasureManipulator::~IMeasureManipulator() = default;

void IMeasureManipulator::init() {
    IManipulator::init();
    m_filter = 0;
    m_mode = 0;
}

void IMeasureManipulator::setUpdater(std::shared_ptr<qrn::IUpdater> updater) {
    m_updater = std::move(updater);
}

} // namespace qrngl
