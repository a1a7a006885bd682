#include "qrnviewer/PmiDisplay.h"

#include "qrngl/interaction/EntityGeometry.h"

#include "qrnplatform/Text.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCView.h"
#include "qrnsg/VisibilityFunctor.h"

#include <algorithm>

namespace qrnviewer {

namespace {

template <class T>
std::shared_ptr<T> fetch(const std::shared_ptr<qrn::IDocument>& document, short type) {
    return document ? std::dynamic_pointer_cast<T>(document->getSchema(type)) : nullptr;
}

void setVisible(qrnsg::RTState& state, int id, bool visible) {
    // A visibility functor sets the bit again every frame: it must agree.
    if (auto functor = std::dynamic_pointer_cast<qrnsg::VisibilityFunctor>(state.functor)) {
        if (visible)
            functor->show(id);
        else
            functor->hide(id);
    }
    if (unsigned char* flags = state.flags.find(id))
        *flags = static_cast<unsigned char>(visible ? *flags | qrnsg::RTState::VISIBLE
                                                    : *flags & ~qrnsg::RTState::VISIBLE);
}

} // namespace

PmiDisplay::PmiDisplay(std::shared_ptr<qrn::IDocument> document) : m_document(document) {}

void PmiDisplay::setShown(bool shown) {
    m_shown = shown;
    apply();
}

void PmiDisplay::setView(int view) {
    m_view = view;
    apply();
}

std::size_t PmiDisplay::items() const {
    auto pmi = fetch<qrnsg::SCPmi>(m_document.lock(), qrnsg::SCHEMA_PMI);
    return pmi ? pmi->items.size() : 0;
}

std::shared_ptr<qrnsg::SCView> PmiDisplay::listingView(const qrnsg::SCView::View*& view) const {
    auto views = fetch<qrnsg::SCView>(m_document.lock(), qrnsg::SCHEMA_VIEW);
    view = views && m_view >= 0 && static_cast<std::size_t>(m_view) < views->views.size() &&
                   views->views[static_cast<std::size_t>(m_view)].listsPmi
               ? &views->views[static_cast<std::size_t>(m_view)]
               : nullptr;
    return views;
}

bool PmiDisplay::isShown(std::size_t item, const qrnsg::SCView::View* listing) const {
    return m_shown && (!listing || std::find(listing->pmiItems.begin(), listing->pmiItems.end(),
                                             static_cast<int>(item)) != listing->pmiItems.end());
}

std::size_t PmiDisplay::shownItems() const {
    const qrnsg::SCView::View* listing = nullptr;
    const auto views = listingView(listing);
    std::size_t shown = 0;
    for (std::size_t i = 0; i < items(); ++i)
        shown += isShown(i, listing) ? 1 : 0;
    return shown;
}

void PmiDisplay::apply() const {
    auto document = m_document.lock();
    auto pmi = fetch<qrnsg::SCPmi>(document, qrnsg::SCHEMA_PMI);
    auto rt = fetch<qrnsg::SCSceneRT>(document, qrnsg::SCHEMA_SCENE_RT);
    if (!pmi || !rt)
        return;
    const qrnsg::SCView::View* listing = nullptr;
    const auto views = listingView(listing);
    for (std::size_t i = 0; i < pmi->items.size(); ++i) {
        const bool visible = isShown(i, listing);
        for (int id : pmi->items[i].polylineIds)
            setVisible(rt->polylines, id, visible);
        for (int id : pmi->items[i].textIds)
            setVisible(rt->texts, id, visible);
        for (int id : pmi->items[i].meshIds)
            setVisible(rt->meshes, id, visible);
    }
    // Picks see what is shown: hidden PMI is not there to be picked.
    qrngl::visibilityChanged(document);
}

std::string PmiDisplay::describe() const {
    const std::size_t all = items();
    if (all == 0)
        return "the model has no PMI";
    if (!m_shown)
        return "PMI hidden";
    const qrnsg::SCView::View* listing = nullptr;
    const auto views = listingView(listing);
    if (listing)
        return "PMI of view " + qrnplatform::Text::toUtf8(listing->name) + ": " +
               std::to_string(shownItems()) + " of " + std::to_string(all) + " items";
    return "PMI shown: " + std::to_string(all) + (all == 1 ? " item" : " items");
}

} // namespace qrnviewer
