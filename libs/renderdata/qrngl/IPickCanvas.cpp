#include "qrngl/IPickCanvas.h"

namespace qrngl {

IPickCanvas::~IPickCanvas() = default;

bool IPickCanvas::isAdvancePointFilterSupported() const {
    return false;
}

void IPickCanvas::GetPoints(int, int, std::vector<PickResult>&) const {}

void IPickCanvas::SetPickBox(int, int, int, unsigned short) {}

void IPickCanvas::GetPickBox(int, int, std::vector<PickResult>&) {}

void IPickCanvas::OnDrawPickBox(int, int, int, int) {}

} // namespace qrngl
