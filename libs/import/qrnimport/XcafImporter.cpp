// Open CASCADE turns signals into exceptions only where this is defined, as its own build does.
#if !defined(_WIN32) && !defined(OCC_CONVERT_SIGNALS)
#define OCC_CONVERT_SIGNALS
#endif

#include "qrnimport/XcafImporter.h"

#include "qrnimport/BRepEntities.h"
#include "qrnimport/OcctUtils.h"
#include "qrnimport/PartMesher.h"
#include "qrnimport/PmiImporter.h"
#include "qrnimport/PmiPresentation.h"
#include "qrnimport/SolidCheck.h"
#include "qrnimport/StepTessellation.h"
#include "qrnplatform/Text.h"

#include <BRepBndLib.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TDF_Label.hxx>
#include <TDF_LabelMapHasher.hxx>
#include <TDF_LabelSequence.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XCAFDoc_VisMaterial.hxx>
#include <XCAFDoc_VisMaterialTool.hxx>
#include <XCAFPrs.hxx>
#include <XCAFPrs_IndexedDataMapOfShapeStyle.hxx>
#include <XCAFPrs_Style.hxx>

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <map>
#include <stdexcept>
#include <utility>

namespace qrnimport {

namespace {

using qrnmath::Vec3;
using qrnsg::PartEntities;

// A surface colour as the viewer draws it (display RGB), with alpha.
struct Colour {
    bool set = false;
    std::array<float, 4> rgba{0.0f, 0.0f, 0.0f, 1.0f};
};

// Quantity_Color holds linear RGB; the viewer lights in display space, so colours are taken
// as sRGB values, which are also the numbers STEP and IGES files carry.
Colour toColour(const Quantity_ColorRGBA& c) {
    Colour out;
    out.set = true;
    double r = 0.0, g = 0.0, b = 0.0;
    c.GetRGB().Values(r, g, b, Quantity_TOC_sRGB);
    out.rgba = {static_cast<float>(r), static_cast<float>(g), static_cast<float>(b), c.Alpha()};
    return out;
}

Colour styleColour(const XCAFPrs_Style& style) {
    if (style.IsSetColorSurf())
        return toColour(style.GetColorSurfRGBA());
    if (!style.Material().IsNull())
        return toColour(style.Material()->BaseColor());
    return Colour();
}

// Instance names that say nothing: XCAF's for unnamed components ("=>[0:1:1:2]"), and the
// bare occurrence numbers STEP readers fall back to when a file names no instance.
bool isGeneratedName(const std::wstring& name) {
    return name.rfind(L"=>[", 0) == 0 ||
           name.find_first_not_of(L"0123456789") == std::wstring::npos;
}

using FaceIndex = BRepEntities::FaceIndex;

struct FaceInfo {
    TopoDS_Face face;
    Colour colour; // its own, or of a sub-shape holding it; unset takes the instance's colour
};

// A referred shape (a part), whatever the number of its instances.
struct ShapeInfo {
    TDF_Label label;
    TopoDS_Shape shape;
    std::wstring name;
    std::vector<FaceInfo> faces; // visible faces
    bool inherits = false;       // some face takes its colour from the instance
    bool triangulated = true;    // every face already holds a triangulation
    Bnd_Box box;
    // Made with the first part of the shape: the same for every colouring of it.
    bool topologyMade = false;
    BRepEntities::Topology topology;
};

struct PendingNode {
    std::wstring name;
    int parent = -1;
    gp_Trsf local;
    gp_Trsf world;
    int shape = -1; // index into the shape infos for a part instance
    Colour colour;  // inherited down the assembly to the part
};

class Importer {
public:
    Importer(const Handle(TDocStd_Document) & document, const ModelReader::Options& options,
             ModelData& model, qrn::IStatusManager* status, ProgressBridge::Deadline deadline)
        : m_document(document), m_options(options), m_model(model), m_status(status),
          m_deadline(deadline) {
        const TDF_Label main = document->Main();
        m_shapes = XCAFDoc_DocumentTool::ShapeTool(main);
        m_colours = XCAFDoc_DocumentTool::ColorTool(main);
        m_visMaterials = XCAFDoc_DocumentTool::VisMaterialTool(main);
    }

    // The faces made of each B-rep face, for the PMI that refers to them.
    PmiImporter::FaceOwners& faceOwners() { return m_faceOwners; }

    void run() {
        TDF_LabelSequence roots;
        m_shapes->GetFreeShapes(roots);
        for (TDF_LabelSequence::Iterator it(roots); it.More(); it.Next())
            walk(it.Value(), -1, gp_Trsf(), Colour(), 0);
        collectFaces();
        mesh();
        buildParts();
    }

private:
    Colour labelColour(const TDF_Label& label) const {
        Colour c;
        if (!m_visMaterials.IsNull()) {
            Handle(XCAFDoc_VisMaterial) vis = m_visMaterials->GetShapeMaterial(label);
            if (!vis.IsNull())
                c = toColour(vis->BaseColor());
        }
        if (m_colours.IsNull())
            return c;
        Quantity_ColorRGBA rgba;
        if (m_colours->GetColor(label, XCAFDoc_ColorGen, rgba))
            c = toColour(rgba);
        if (m_colours->GetColor(label, XCAFDoc_ColorSurf, rgba))
            c = toColour(rgba);
        return c;
    }

    bool visible(const TDF_Label& label) const {
        return m_colours.IsNull() || m_colours->IsVisible(label);
    }

    // Depth first, so that parents come before their children.
    void walk(const TDF_Label& label, int parent, const gp_Trsf& parentWorld,
              const Colour& parentColour, int depth) {
        if (depth > 64)
            return; // a reference cycle in a broken file
        TDF_Label ref = label;
        XCAFDoc_ShapeTool::GetReferredShape(label, ref);
        if (!visible(label) || !visible(ref))
            return;

        PendingNode node;
        node.parent = parent;
        if (ref != label)
            node.local = XCAFDoc_ShapeTool::GetLocation(label).Transformation();
        node.world = parentWorld * node.local;
        // The part's colour overrides what comes from above; the instance's overrides both.
        node.colour = parentColour;
        if (Colour c = labelColour(ref); c.set)
            node.colour = c;
        if (ref != label)
            if (Colour c = labelColour(label); c.set)
                node.colour = c;
        std::wstring name;
        if (ref != label && OcctUtils::labelName(label, name) && !isGeneratedName(name))
            node.name = name;
        else if (OcctUtils::labelName(ref, name))
            node.name = name;

        if (XCAFDoc_ShapeTool::IsAssembly(ref)) {
            const int index = static_cast<int>(m_nodes.size());
            m_nodes.push_back(node);
            TDF_LabelSequence components;
            XCAFDoc_ShapeTool::GetComponents(ref, components, false);
            for (TDF_LabelSequence::Iterator it(components); it.More(); it.Next())
                walk(it.Value(), index, node.world, node.colour, depth + 1);
            return;
        }
        TopoDS_Shape shape = XCAFDoc_ShapeTool::GetShape(ref);
        if (shape.IsNull())
            return;
        node.shape = shapeIndex(ref, shape);
        m_nodes.push_back(node);
    }

    int shapeIndex(const TDF_Label& ref, const TopoDS_Shape& shape) {
        if (const int* found = m_shapeIndex.Seek(ref))
            return *found;
        ShapeInfo info;
        info.label = ref;
        info.shape = shape;
        OcctUtils::labelName(ref, info.name);
        const int index = static_cast<int>(m_shapeInfos.size());
        m_shapeInfos.push_back(info);
        m_shapeIndex.Bind(ref, index);
        return index;
    }

    // The faces of each part with their colours: a face's own colour wins over that of a
    // sub-shape holding it (a shell, a solid), which wins over the part's and the instance's.
    void collectFaces() {
        for (ShapeInfo& info : m_shapeInfos) {
            XCAFPrs_IndexedDataMapOfShapeStyle styles;
            XCAFPrs::CollectStyleSettings(info.label, TopLoc_Location(), styles);
            NCollection_DataMap<TopoDS_Shape, XCAFPrs_Style, TopTools_ShapeMapHasher> faceStyles;
            bool partHidden = false;
            for (int type = TopAbs_FACE; type >= TopAbs_COMPOUND; --type) {
                for (XCAFPrs_IndexedDataMapOfShapeStyle::Iterator it(styles); it.More();
                     it.Next()) {
                    const TopoDS_Shape& key = it.Key();
                    if (key.IsNull() || key.ShapeType() != type)
                        continue;
                    if (key.IsSame(info.shape)) {
                        // The part label's own colour is in the instance colour already.
                        partHidden = !it.Value().IsVisible();
                        continue;
                    }
                    if (type == TopAbs_FACE) {
                        if (!faceStyles.IsBound(key))
                            faceStyles.Bind(key, it.Value());
                        continue;
                    }
                    for (TopExp_Explorer f(key, TopAbs_FACE); f.More(); f.Next())
                        if (!faceStyles.IsBound(f.Current()))
                            faceStyles.Bind(f.Current(), it.Value());
                }
            }
            if (partHidden)
                continue;
            for (TopExp_Explorer f(info.shape, TopAbs_FACE); f.More(); f.Next()) {
                FaceInfo face;
                face.face = TopoDS::Face(f.Current());
                if (const XCAFPrs_Style* style = faceStyles.Seek(face.face)) {
                    if (!style->IsVisible())
                        continue;
                    face.colour = styleColour(*style);
                }
                TopLoc_Location loc;
                if (BRep_Tool::Triangulation(face.face, loc).IsNull())
                    info.triangulated = false;
                info.inherits = info.inherits || !face.colour.set;
                info.faces.push_back(face);
            }
        }
    }

    // Meshes every part once, with a deflection relative to the size of the whole model.
    void mesh() {
        for (ShapeInfo& info : m_shapeInfos) {
            try {
                BRepBndLib::Add(info.shape, info.box, true);
            } catch (const Standard_Failure&) {
                info.box.SetVoid();
            }
        }
        Bnd_Box model;
        for (const PendingNode& node : m_nodes) {
            if (node.shape < 0)
                continue;
            const Bnd_Box& box = m_shapeInfos[static_cast<std::size_t>(node.shape)].box;
            if (!box.IsVoid())
                model.Add(box.Transformed(node.world));
        }
        double diagonal = model.IsVoid() ? 0.0 : std::sqrt(model.SquareExtent());
        if (!std::isfinite(diagonal) || diagonal <= Precision::Confusion())
            diagonal = 1.0;
        m_deflection = std::max(m_options.relativeDeflection, 1e-6) * diagonal;

        std::vector<TopoDS_Shape> shapes;
        std::vector<const ShapeInfo*> infos;
        for (const ShapeInfo& info : m_shapeInfos)
            if (!info.triangulated) {
                shapes.push_back(info.shape);
                infos.push_back(&info);
            }
        if (shapes.empty())
            return;
        const auto failures = PartMesher::mesh(
            shapes, m_deflection, angularDeflection(), m_options.meshThreads,
            [this](int percent) { progress(L"meshing", percent); }, m_deadline);
        if (ProgressBridge::passed(m_deadline))
            throw std::runtime_error("meshing stopped at the time limit");
        progress(L"meshing", 100);
        for (const auto& failure : failures)
            warn(L"could not mesh " + displayName(*infos[failure.shape]) + L": " + failure.message);
        endProgress();
    }

    double angularDeflection() const {
        return m_options.angularDeflection > 0.0 ? m_options.angularDeflection : 0.5;
    }

    std::wstring displayName(const ShapeInfo& info) const {
        return info.name.empty() ? std::wstring(L"a part") : L"'" + info.name + L"'";
    }

    int materialIndex(const Colour& colour) {
        Colour c = colour;
        if (!c.set) {
            c.set = true;
            c.rgba = {0.75f, 0.75f, 0.75f, 1.0f};
        }
        std::array<long, 4> key{};
        for (int i = 0; i < 4; ++i)
            key[static_cast<std::size_t>(i)] = std::lround(
                std::min(1.0f, std::max(0.0f, c.rgba[static_cast<std::size_t>(i)])) * 10000.0f);
        auto found = m_materials.find(key);
        if (found != m_materials.end())
            return found->second;
        const float alpha = static_cast<float>(key[3]) / 10000.0f;
        qrnsg::MMaterial m = qrnsg::MMaterial::fromColor(
            static_cast<float>(key[0]) / 10000.0f, static_cast<float>(key[1]) / 10000.0f,
            static_cast<float>(key[2]) / 10000.0f, 1.0f - alpha);
        m.diffuse[3] = alpha;
        wchar_t name[32];
        std::swprintf(name, 32, L"#%02x%02x%02x", static_cast<int>(std::lround(key[0] * 0.0255)),
                      static_cast<int>(std::lround(key[1] * 0.0255)),
                      static_cast<int>(std::lround(key[2] * 0.0255)));
        m.name = name;
        const int index = m_model.addMaterial(m);
        m_materials.emplace(key, index);
        return index;
    }

    void buildParts() {
        std::size_t placed = 0;
        for (const PendingNode& node : m_nodes)
            placed += node.shape >= 0 ? 1 : 0;
        std::map<std::pair<int, std::array<long, 5>>, int> partOf; // shape and colour to part
        std::size_t done = 0;
        if (placed > 0)
            progress(L"importing", 0);
        for (const PendingNode& node : m_nodes) {
            int part = -1;
            if (node.shape >= 0) {
                ShapeInfo& info = m_shapeInfos[static_cast<std::size_t>(node.shape)];
                // Instances differ only where a face takes its colour from the instance.
                std::array<long, 5> colourKey{};
                if (info.inherits && node.colour.set) {
                    colourKey[0] = 1;
                    for (std::size_t i = 0; i < 4; ++i)
                        colourKey[i + 1] = std::lround(node.colour.rgba[i] * 10000.0f);
                }
                const auto key = std::make_pair(node.shape, colourKey);
                auto found = partOf.find(key);
                if (found == partOf.end()) {
                    part = m_model.addPart(makePart(info, node.colour));
                    partOf.emplace(key, part);
                } else {
                    part = found->second;
                }
                progress(L"importing", static_cast<int>(++done * 100 / placed));
            }
            std::wstring name = node.name;
            if (name.empty())
                name = (part >= 0 ? L"Part " : L"Assembly ") +
                       std::to_wstring(m_model.nodes.size() + 1);
            m_model.addNode(name, node.parent, OcctUtils::toMat4(node.local), part);
        }
        if (placed > 0)
            endProgress();
    }

    ModelData::Part makePart(ShapeInfo& info, const Colour& instanceColour) {
        ModelData::Part part;
        part.name =
            info.name.empty() ? L"Part " + std::to_wstring(m_model.parts.size() + 1) : info.name;
        std::map<int, std::size_t> meshOf; // material to mesh
        FaceIndex faceIndex;
        const int partIndex = static_cast<int>(m_model.parts.size());
        for (const FaceInfo& face : info.faces) {
            const int material = materialIndex(face.colour.set ? face.colour : instanceColour);
            auto found = meshOf.find(material);
            if (found == meshOf.end()) {
                found = meshOf.emplace(material, part.meshes.size()).first;
                part.meshes.emplace_back();
                part.meshMaterials.push_back(material);
            }
            qrnsg::Mesh& mesh = part.meshes[found->second];
            auto first = static_cast<unsigned int>(mesh.triangleCount());
            std::vector<unsigned int> sizes;
            try {
                sizes = PartMesher::appendFace(face.face, mesh);
            } catch (const Standard_Failure&) {
                // a face that cannot be tessellated is left out
            }
            PartEntities::Surface surface;
            if (sizes.size() == 1) {
                if (!faceIndex.IsBound(face.face)) {
                    faceIndex.Bind(face.face, static_cast<int>(part.entities.faces.size()));
                    m_faceOwners[face.face.TShape().get()].emplace_back(
                        partIndex, static_cast<int>(part.entities.faces.size()));
                }
                try {
                    surface = BRepEntities::surface(face.face);
                } catch (const Standard_Failure&) {
                    surface.type = PartEntities::Surface::OTHER;
                }
            }
            for (unsigned int size : sizes) {
                part.entities.faces.push_back(
                    {static_cast<int>(found->second), first, size, surface});
                first += size;
            }
        }
        // Materials whose faces gave no triangles are dropped again.
        std::vector<int> meshIndex(part.meshes.size());
        for (std::size_t m = part.meshes.size(); m-- > 0;) {
            meshIndex[m] = static_cast<int>(m);
            if (part.meshes[m].indices.empty()) {
                part.meshes.erase(part.meshes.begin() + static_cast<std::ptrdiff_t>(m));
                part.meshMaterials.erase(part.meshMaterials.begin() +
                                         static_cast<std::ptrdiff_t>(m));
                for (std::size_t later = m + 1; later < meshIndex.size(); ++later)
                    --meshIndex[later];
            }
        }
        for (PartEntities::Face& face : part.entities.faces)
            face.mesh = meshIndex[static_cast<std::size_t>(face.mesh)];
        if (!info.topologyMade) {
            info.topology = BRepEntities::topology(info.shape, faceIndex, m_options.edges,
                                                   angularDeflection(), m_deflection);
            info.topologyMade = true;
        }
        part.entities.vertices = info.topology.vertices;
        if (m_options.edges) {
            part.edges = info.topology.edges;
            part.entities.edges = info.topology.edgeEntities;
        }
        // A part that bounds a solid is drawn without its back faces.
        const bool closed = SolidCheck::closed(part.meshes);
        for (qrnsg::Mesh& mesh : part.meshes)
            mesh.closed = closed;
        return part;
    }

    // Each percentage once: a model of many parts would flood the status otherwise.
    void progress(const std::wstring& task, int percent) {
        if (!m_status || (task == m_task && percent == m_percent))
            return;
        m_task = task;
        m_percent = percent;
        m_status->setProgress(task, percent);
    }
    void endProgress() {
        m_task.clear();
        if (m_status)
            m_status->endProgress();
    }
    void warn(const std::wstring& text) {
        if (m_status)
            m_status->setStatus(text);
    }

    Handle(TDocStd_Document) m_document;
    const ModelReader::Options& m_options;
    ModelData& m_model;
    PmiImporter::FaceOwners m_faceOwners;
    qrn::IStatusManager* m_status;
    ProgressBridge::Deadline m_deadline;
    Handle(XCAFDoc_ShapeTool) m_shapes;
    Handle(XCAFDoc_ColorTool) m_colours;
    Handle(XCAFDoc_VisMaterialTool) m_visMaterials;
    std::vector<PendingNode> m_nodes;
    std::vector<ShapeInfo> m_shapeInfos;
    NCollection_DataMap<TDF_Label, int, TDF_LabelMapHasher> m_shapeIndex;
    std::map<std::array<long, 4>, int> m_materials;
    double m_deflection = 0.1;
    std::wstring m_task;
    int m_percent = -1;
};

std::wstring unitName(double metres) {
    static const std::pair<double, const wchar_t*> units[] = {
        {0.001, L"mm"},  {0.01, L"cm"}, {1.0, L"m"},     {0.0254, L"in"},
        {0.3048, L"ft"}, {1e-6, L"um"}, {1000.0, L"km"}, {1609.344, L"mi"}};
    for (const auto& u : units)
        if (std::abs(metres - u.first) <= u.first * 1e-6)
            return u.second;
    return std::wstring();
}

} // namespace

bool XcafImporter::import(const Handle(TDocStd_Document) & document,
                          const ModelReader::Options& options, ModelData& model, std::string& error,
                          qrn::IStatusManager* status, ProgressBridge::Deadline deadline,
                          const StepSource* step) {
    model = ModelData();
    if (document.IsNull() || !XCAFDoc_DocumentTool::IsXCAFDocument(document)) {
        error = "not an XCAF document";
        return false;
    }
    PmiImporter::FaceOwners owners;
    try {
        Importer importer(document, options, model, status, deadline);
        importer.run();
        owners = std::move(importer.faceOwners());
    } catch (const Standard_Failure& e) {
        error = std::string("the model could not be converted: ") + e.GetMessageString();
        model = ModelData();
        return false;
    } catch (const std::exception& e) {
        error = std::string("the model could not be converted: ") + e.what();
        model = ModelData();
        return false;
    }
    double metres = 0.0;
    if (XCAFDoc_DocumentTool::GetLengthUnit(document, metres)) {
        const std::wstring unit = unitName(metres);
        if (!unit.empty())
            model.lengthUnit = unit;
    }
    if (step && model.triangleCount() == 0 && !step->tessellated.parts.empty()) {
        // Parts the reader did not know, with their own materials, in place of the empty
        // shapes it made of them.
        if (std::all_of(model.parts.begin(), model.parts.end(), [](const ModelData::Part& p) {
                return p.meshes.empty() && p.edges.stripCount() == 0;
            })) {
            model.parts.clear();
            model.nodes.clear();
        }
        const int materials = static_cast<int>(model.materials.size());
        for (const auto& m : step->tessellated.materials)
            model.materials.push_back(m);
        for (const auto& node : step->tessellated.nodes) {
            if (node.part < 0)
                continue;
            ModelData::Part part = step->tessellated.parts[static_cast<std::size_t>(node.part)];
            for (int& m : part.meshMaterials)
                m += materials;
            model.addNode(node.name, -1, node.local, model.addPart(std::move(part)));
        }
    }
    if (options.pmi) {
        try {
            // A crash in the PMI costs the PMI, not the model.
            OCC_CATCH_SIGNALS
            const bool presented = step && step->pmi;
            PmiImporter::import(document, model, presented ? &step->presentation : nullptr,
                                &owners);
        } catch (const Standard_Failure& e) {
            if (status)
                status->setStatus(L"PMI left out: " +
                                  qrnplatform::Text::fromUtf8(e.GetMessageString()));
        }
    }
    return true;
}

} // namespace qrnimport
