#pragma once

#include "qrngl/IRenderer.h"
#include "qrngl/MeasureRT.h"
#include "qrngldata/qrngldata_export.h"
#include "qrnsg/Container.h"
#include "qrnsg/EntityNames.h"
#include "qrnsg/PairT.h"
#include "qrnsg/Schema.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace qrngl {

// A picked entity as the measuring tools keep it: its kind (1 edge-like, 2 point, 3 edge, 4
// face) and its whole name, which also says which placed instance was hit.
using EntityType = qrnsg::EntityNames::Kind;
using EntityPick = qrnsg::PairT<EntityType, int>;

// The document's measurements and how they are shown.
class QRNGLDATA_EXPORT SCMeasure : public qrnsg::Schema {
public:
    enum : std::int32_t { DOCUMENT_UNIT = 14 };
    struct Settings {
        std::int32_t textOrientation = 1;  // 1: labels face the viewer
        unsigned char precision = 2;       // decimals; 0 reads as 1
        std::int32_t unit = DOCUMENT_UNIT; // an SCInfo unit, or the document's
    };

    SCMeasure();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;
    // Removes every measurement (a moved clip plane invalidates them all), or only those not
    // saved with the document.
    void clearAll(bool keepSaved = false);
    // Forgets the picks and the measurement under edit.
    void tmpReset();
    // Adds a measurement under a fresh id, which it returns.
    unsigned int add(std::shared_ptr<MeasureRT> record);
    void addHoleData(std::shared_ptr<IRenderer> renderer, int& id);
    void clearHoleData();
    void addEdgeCircleData(std::shared_ptr<IRenderer> renderer, int& id);
    void clearEdgeCircleData();

    Settings settings;
    std::int32_t billboard = 0; // 1: labels face the viewer whatever the settings say
    qrnsg::Container<unsigned int, std::shared_ptr<MeasureRT>> records;
    // The picks towards the next measurement, first to last.
    std::vector<EntityPick> selection;
    // Selected measurements and markups, drawn highlighted.
    std::vector<std::shared_ptr<MeasureRT>> selected;
    std::vector<unsigned int> highlightedMeasures;
    std::vector<int> highlightedMarkups;
    int current = -1; // the measurement a pick chose; -1 for none
    int pickRadius = 4;
    // The records whose labels the measure renderer's last pick pass drew, by pick name.
    std::map<unsigned int, unsigned int> labelNames;
    std::map<int, std::shared_ptr<IRenderer>> holeData, edgeCircleData;
    // Counts every change of what is shown: picks keyed on a kept view draw afresh.
    unsigned int revision = 0;

private:
    unsigned int m_next = 1;
    int m_nextData = 1;
};

} // namespace qrngl
