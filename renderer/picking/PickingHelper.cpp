#include "qrngl/picking/PickingHelper.h"

#include "qrngl/frame/CanvasBase.h"
#include "qrngl/picking/PickPass.h"

#include <algorithm>
#include <cstdlib>

namespace qrngl {

namespace {
unsigned short typeOf(const std::shared_ptr<IFilter>& filter) {
    return filter ? filter->type() : static_cast<unsigned short>(PickingHelper::DEFAULT_TYPE);
}
} // namespace

void PickingHelper::deliver(const std::shared_ptr<IPickCanvas>& canvas,
                            const std::vector<PickResult>& hits,
                            const std::shared_ptr<IFilter>& filter,
                            const std::shared_ptr<ISelector>& selector, unsigned int flags) {
    if (filter)
        filter->filter(hits);
    const FilterResult chosen = filter ? filter->get() : FilterResult();
    // Only a pick that looks for tool drawables tells the tools what it chose: a pick for
    // faces alone says nothing about whether the pointer is on a clip plane.
    if (typeOf(filter) & TOOL_TYPE)
        if (auto base = std::dynamic_pointer_cast<CanvasBase<IPickCanvas>>(canvas))
            PickPass::choose(base->document(), chosen);
    if (selector)
        selector->select(flags, chosen);
}

void PickingHelper::pick(std::shared_ptr<IPickCanvas> canvas, std::shared_ptr<IFilter> filter,
                         std::shared_ptr<ISelector> selector, unsigned int flags, int x, int y,
                         int size) {
    if (!canvas)
        return;
    canvas->Set(x, y, size, typeOf(filter));
    canvas->OnDraw();
    deliver(canvas, canvas->Get(), filter, selector, flags);
}

void PickingHelper::pickPoints(std::shared_ptr<SCRenderer>& renderer,
                               std::shared_ptr<IFilter> filter, std::shared_ptr<ISelector> selector,
                               unsigned int flags, int x, int y, int size) {
    if (!renderer || !renderer->pickCanvas || !renderer->camera)
        return;
    const auto& canvas = renderer->pickCanvas;
    canvas->Invalidate();
    const int w = static_cast<int>(renderer->camera->viewportWidth());
    const int h = static_cast<int>(renderer->camera->viewportHeight());
    const float z = renderer->camera->zoomFactor();
    int a = std::min(static_cast<int>(w * 0.1), static_cast<int>(h * 0.1));
    const float r = 1.0f / (2.0f * z);
    if (1.0f > r && r > 0.001f)
        a = static_cast<int>(a * r);
    if (a < 2)
        return;
    const float half = a * 0.5f;
    const int lowerY = static_cast<int>((h - y) - half);
    const int lowerX = static_cast<int>(x - half);
    canvas->SetPickBox(a, a, size, typeOf(filter));
    canvas->OnDrawPickBox(lowerX, lowerY, a, a);
    std::vector<PickResult> hits;
    canvas->GetPickBox(a, a, hits);
    deliver(canvas, hits, filter, selector, flags);
}

void PickingHelper::pickbox(std::shared_ptr<SCRenderer>& renderer, std::shared_ptr<IFilter> filter,
                            std::shared_ptr<ISelector> selector, unsigned int flags, int x0, int y0,
                            int x1, int y1) {
    if (!renderer || !renderer->pickCanvas || !renderer->camera)
        return;
    const auto& canvas = renderer->pickCanvas;
    // Only the window can hold hits: a rectangle dragged out past it is cut to it before
    // anything is sized from it.
    const int w = static_cast<int>(renderer->camera->viewportWidth());
    const int h = static_cast<int>(renderer->camera->viewportHeight());
    x0 = std::clamp(x0, 0, w);
    x1 = std::clamp(x1, 0, w);
    y0 = std::clamp(y0, 0, h);
    y1 = std::clamp(y1, 0, h);
    const int width = std::abs(x1 - x0);
    const int height = std::abs(y1 - y0);
    int x = 0, y = 0;
    getPBLowerLeft(static_cast<int>(renderer->camera->viewportHeight()), x0, y0, x1, y1, x, y);
    canvas->SetPickBox(width, height, 0, typeOf(filter));
    canvas->OnDrawPickBox(x, y, width, height);
    std::vector<PickResult> hits;
    canvas->GetPickBox(width, height, hits);
    deliver(canvas, hits, filter, selector, flags);
}

void PickingHelper::getPBLowerLeft(int height, int x0, int y0, int x1, int y1, int& x, int& y) {
    x = 0;
    y = 0;
    if (x0 == x1 || y0 == y1)
        return; // deliberately not moved to the pick point
    x = x0 < x1 ? x0 : x1;
    y = height - (y1 > y0 ? y1 : y0);
}

} // namespace qrngl
