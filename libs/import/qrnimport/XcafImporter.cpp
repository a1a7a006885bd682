// Open CASCADE turns signals into exceptions only where this is defined, as its own build does.
#if !defined(_WIN32) && !defined(OCC_CONVERT_SIGNALS)
#define OCC_CONVERT_SIGNALS
#endif

#include "qrnviewer/occt/XcafImporter.h"

#include "qrnmath/MatrixUtils.h"
#include "qrnplatform/Text.h"
#include "qrnviewer/SolidCheck.h"
#include "qrnviewer/occt/MeshNormals.h"
#include "qrnviewer/occt/PmiImporter.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepBndLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <GeomLProp_SLProps.hxx>
#include <Geom_Surface.hxx>
#include <NCollection_DataMap.hxx>
#include <Poly_Polygon3D.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <Quantity_ColorRGBA.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TDF_Label.hxx>
#include <TDF_LabelMapHasher.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedDataMapOfShapeListOfShape.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Vertex.hxx>
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
#include <atomic>
#include <cmath>
#include <exception>
#include <map>
#include <mutex>
#include <thread>
#include <unordered_set>
#include <utility>

namespace qrnviewer {

namespace {

using qrnmath::Mat4;
using qrnmath::MatrixUtils;
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

// TCollection_ExtendedString is UTF-16; wchar_t is UTF-32 on Linux and UTF-16 on Windows.
std::wstring toWide(const TCollection_ExtendedString& s) {
    std::wstring out;
    const Standard_ExtString p = s.ToExtString();
    const int n = s.Length();
    out.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        char32_t c = p[i];
        if constexpr (sizeof(wchar_t) >= 4) {
            if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n && p[i + 1] >= 0xDC00 &&
                p[i + 1] <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(p[i + 1]) - 0xDC00);
                ++i;
            } else if (c >= 0xD800 && c <= 0xDFFF) {
                c = 0xFFFD; // a lone surrogate
            }
        }
        out.push_back(static_cast<wchar_t>(c));
    }
    return out;
}

std::wstring trim(const std::wstring& s) {
    const auto first = s.find_first_not_of(L" \t\r\n");
    if (first == std::wstring::npos)
        return std::wstring();
    const auto last = s.find_last_not_of(L" \t\r\n");
    return s.substr(first, last - first + 1);
}

bool labelName(const TDF_Label& label, std::wstring& name) {
    Handle(TDataStd_Name) attr;
    if (label.IsNull() || !label.FindAttribute(TDataStd_Name::GetID(), attr))
        return false;
    name = trim(toWide(attr->Get()));
    return !name.empty();
}

// Instance names that say nothing: XCAF's for unnamed components ("=>[0:1:1:2]"), and the
// bare occurrence numbers STEP readers fall back to when a file names no instance.
bool isGeneratedName(const std::wstring& name) {
    return name.rfind(L"=>[", 0) == 0 ||
           name.find_first_not_of(L"0123456789") == std::wstring::npos;
}

Mat4 toMat4(const gp_Trsf& t) {
    Mat4 m = MatrixUtils::identity();
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 4; ++c)
            m[c * 4 + r] = static_cast<float>(t.Value(r + 1, c + 1));
    return m;
}

Vec3 toVec3(const gp_XYZ& p) {
    return Vec3(static_cast<float>(p.X()), static_cast<float>(p.Y()), static_cast<float>(p.Z()));
}

// Kept faces by their index among the part's face entities.
using FaceIndex = NCollection_DataMap<TopoDS_Shape, int, TopTools_ShapeMapHasher>;

// The analytic surface under a face, in the frame of its triangulation, facing outwards.
PartEntities::Surface surfaceOf(const TopoDS_Face& face) {
    PartEntities::Surface out;
    TopLoc_Location loc;
    if (BRep_Tool::Surface(face, loc).IsNull())
        return out;
    out.type = PartEntities::Surface::OTHER;
    const BRepAdaptor_Surface s(face, Standard_False);
    const auto axis = [&out](const gp_Ax1& a) {
        out.origin = toVec3(a.Location().XYZ());
        out.axis = toVec3(a.Direction().XYZ());
    };
    switch (s.GetType()) {
    case GeomAbs_Plane: {
        const gp_Ax3 p = s.Plane().Position();
        // The parametric normal flips with the face and with a mirroring placement.
        gp_Dir n = p.XDirection().Crossed(p.YDirection());
        if ((face.Orientation() == TopAbs_REVERSED) !=
            (loc.Transformation().VectorialPart().Determinant() < 0.0))
            n.Reverse();
        out.type = PartEntities::Surface::PLANE;
        out.origin = toVec3(p.Location().XYZ());
        out.axis = toVec3(n.XYZ());
        break;
    }
    case GeomAbs_Cylinder:
        out.type = PartEntities::Surface::CYLINDER;
        axis(s.Cylinder().Axis());
        out.radius = static_cast<float>(s.Cylinder().Radius());
        break;
    case GeomAbs_Cone:
        out.type = PartEntities::Surface::CONE;
        axis(s.Cone().Axis());
        out.radius = static_cast<float>(s.Cone().RefRadius());
        out.halfAngle = static_cast<float>(s.Cone().SemiAngle());
        break;
    case GeomAbs_Sphere:
        out.type = PartEntities::Surface::SPHERE;
        axis(s.Sphere().Position().Axis());
        out.radius = static_cast<float>(s.Sphere().Radius());
        break;
    case GeomAbs_Torus:
        out.type = PartEntities::Surface::TORUS;
        axis(s.Torus().Axis());
        out.radius = static_cast<float>(s.Torus().MajorRadius());
        out.minorRadius = static_cast<float>(s.Torus().MinorRadius());
        break;
    default:
        break;
    }
    return out;
}

// The edge's curve in the part's frame; from the strip drawn where it has none.
PartEntities::Curve curveOf(const TopoDS_Edge& edge, const std::vector<Vec3>& strip) {
    PartEntities::Curve out;
    for (std::size_t i = 1; i < strip.size(); ++i)
        out.length += strip[i].distance(strip[i - 1]);
    if (!BRep_Tool::IsGeometric(edge))
        return out;
    const BRepAdaptor_Curve c(edge);
    out.type = PartEntities::Curve::OTHER;
    out.length = static_cast<float>(GCPnts_AbscissaPoint::Length(c));
    if (c.GetType() == GeomAbs_Line) {
        out.type = PartEntities::Curve::LINE;
        out.origin = toVec3(c.Value(c.FirstParameter()).XYZ());
        out.axis = toVec3(c.Line().Direction().XYZ());
    } else if (c.GetType() == GeomAbs_Circle) {
        const gp_Circ circle = c.Circle();
        const bool full = c.LastParameter() - c.FirstParameter() >= c.Period() - 1e-9;
        out.type = full ? PartEntities::Curve::CIRCLE : PartEntities::Curve::ARC;
        out.origin = toVec3(circle.Location().XYZ());
        out.axis = toVec3(circle.Axis().Direction().XYZ());
        out.radius = static_cast<float>(circle.Radius());
    }
    return out;
}

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
    qrnsg::Polyline edges;
    std::vector<PartEntities::Edge> edgeEntities;
    std::vector<Vec3> vertices;
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
             ModelData& model, qrn::IStatusManager* status)
        : m_document(document), m_options(options), m_model(model), m_status(status) {
        const TDF_Label main = document->Main();
        m_shapes = XCAFDoc_DocumentTool::ShapeTool(main);
        m_colours = XCAFDoc_DocumentTool::ColorTool(main);
        m_visMaterials = XCAFDoc_DocumentTool::VisMaterialTool(main);
    }

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
        if (ref != label && labelName(label, name) && !isGeneratedName(name))
            node.name = name;
        else if (labelName(ref, name))
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
        labelName(ref, info.name);
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
        const double angular =
            m_options.angularDeflection > 0.0 ? m_options.angularDeflection : 0.5;

        // Parts that share no face or edge are meshed at once, each by one thread; a part that
        // shares one with a part before it waits for the rest, since meshes are stored there.
        std::vector<ShapeInfo*> together, after;
        std::unordered_set<const void*> seen;
        for (ShapeInfo& info : m_shapeInfos) {
            if (info.triangulated)
                continue;
            bool shares = false;
            std::vector<const void*> own;
            for (TopAbs_ShapeEnum kind : {TopAbs_FACE, TopAbs_EDGE})
                for (TopExp_Explorer e(info.shape, kind); e.More(); e.Next()) {
                    own.push_back(e.Current().TShape().get());
                    shares = shares || seen.count(own.back()) > 0;
                }
            seen.insert(own.begin(), own.end());
            (shares ? after : together).push_back(&info);
        }
        const std::size_t todo = together.size() + after.size();
        if (todo == 0)
            return;
        unsigned int threads = m_options.meshThreads;
        if (threads == 0)
            threads = std::max(1u, std::thread::hardware_concurrency());
        threads = static_cast<unsigned int>(std::min<std::size_t>(threads, together.size()));
        progress(L"meshing", 0);
        std::atomic<std::size_t> next{0}, done{0};
        std::mutex failuresLock;
        std::vector<std::pair<ShapeInfo*, std::wstring>> failures;
        // One part alone may spread over the cores itself; with one thread asked, never.
        const bool inParallel = m_options.meshThreads != 1 && threads <= 1;
        auto meshOne = [&](ShapeInfo* info) {
            try {
                BRepMesh_IncrementalMesh mesher(info->shape, m_deflection, Standard_False, angular,
                                                inParallel ? Standard_True : Standard_False);
            } catch (const Standard_Failure& e) {
                std::lock_guard<std::mutex> lock(failuresLock);
                failures.emplace_back(info, qrnplatform::Text::fromUtf8(e.GetMessageString()));
            }
            ++done;
        };
        std::vector<std::thread> workers;
        for (unsigned int t = 1; t < threads; ++t)
            workers.emplace_back([&] {
                for (std::size_t i = next++; i < together.size(); i = next++)
                    meshOne(together[i]);
            });
        // This thread meshes too, and tells the progress, which only it may.
        for (std::size_t i = next++; i < together.size(); i = next++) {
            meshOne(together[i]);
            progress(L"meshing", static_cast<int>(done * 100 / todo));
        }
        for (std::thread& w : workers)
            w.join();
        for (ShapeInfo* info : after) {
            meshOne(info);
            progress(L"meshing", static_cast<int>(done * 100 / todo));
        }
        progress(L"meshing", 100);
        for (const auto& [info, message] : failures)
            warn(L"could not mesh " + displayName(*info) + L": " + message);
        endProgress();
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
            m_model.addNode(name, node.parent, toMat4(node.local), part);
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
                sizes = appendFace(face.face, mesh);
            } catch (const Standard_Failure&) {
                // a face that cannot be tessellated is left out
            }
            PartEntities::Surface surface;
            if (sizes.size() == 1) {
                if (!faceIndex.IsBound(face.face))
                    faceIndex.Bind(face.face, static_cast<int>(part.entities.faces.size()));
                try {
                    surface = surfaceOf(face.face);
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
            makeTopology(info, faceIndex);
            info.topologyMade = true;
        }
        part.entities.vertices = info.vertices;
        if (m_options.edges) {
            part.edges = info.edges;
            part.entities.edges = info.edgeEntities;
        }
        // A part that bounds a solid is drawn without its back faces.
        const bool closed = SolidCheck::closed(part.meshes);
        for (qrnsg::Mesh& mesh : part.meshes)
            mesh.closed = closed;
        return part;
    }

    // Triangles per face entity appended: one for a face with a surface; one per smooth
    // region for bare triangles, which have no faces of their own to tell them apart.
    std::vector<unsigned int> appendFace(const TopoDS_Face& face, qrnsg::Mesh& mesh) const {
        TopLoc_Location loc;
        const Handle(Poly_Triangulation)& tri = BRep_Tool::Triangulation(face, loc);
        if (tri.IsNull() || tri->NbNodes() < 3 || tri->NbTriangles() < 1)
            return {};
        const gp_Trsf trsf = loc.Transformation();
        const bool reversed = face.Orientation() == TopAbs_REVERSED;
        const bool mirrored = trsf.VectorialPart().Determinant() < 0.0;
        const int nodes = tri->NbNodes();

        std::vector<Vec3> points(static_cast<std::size_t>(nodes));
        for (int i = 1; i <= nodes; ++i)
            points[static_cast<std::size_t>(i - 1)] = toVec3(tri->Node(i).Transformed(trsf).XYZ());
        std::vector<unsigned int> indices;
        indices.reserve(static_cast<std::size_t>(tri->NbTriangles()) * 3);
        for (int t = 1; t <= tri->NbTriangles(); ++t) {
            int a = 0, b = 0, c = 0;
            tri->Triangle(t).Get(a, b, c);
            if (a < 1 || b < 1 || c < 1 || a > nodes || b > nodes || c > nodes)
                continue;
            if (reversed != mirrored)
                std::swap(b, c);
            indices.push_back(static_cast<unsigned int>(a - 1));
            indices.push_back(static_cast<unsigned int>(b - 1));
            indices.push_back(static_cast<unsigned int>(c - 1));
        }
        if (indices.empty())
            return {};
        TopLoc_Location surfaceLoc;
        const Handle(Geom_Surface) surface = BRep_Tool::Surface(face, surfaceLoc);
        std::vector<unsigned int> sizes{static_cast<unsigned int>(indices.size() / 3)};
        if (surface.IsNull()) {
            MeshNormals::Regions regions = MeshNormals::regions(points, indices);
            indices = std::move(regions.indices);
            sizes = std::move(regions.sizes);
        }

        std::vector<Vec3> normals;
        if (tri->HasNormals()) {
            normals.resize(points.size());
            for (int i = 1; i <= nodes; ++i) {
                gp_Dir n = tri->Normal(i).Transformed(trsf);
                if (reversed)
                    n.Reverse();
                normals[static_cast<std::size_t>(i - 1)] = toVec3(n.XYZ());
            }
        } else {
            if (surface.IsNull() || !tri->HasUVNodes()) {
                // Only triangles (a mesh format): sharp edges stay sharp.
                MeshNormals::appendWithCreases(points, indices, mesh);
                return sizes;
            }
            // From the surface, where it has a normal; else from the triangles around.
            normals = MeshNormals::smooth(points, indices);
            const gp_Trsf surfaceTrsf = surfaceLoc.Transformation();
            GeomLProp_SLProps props(surface, 1, Precision::Confusion());
            for (int i = 1; i <= nodes; ++i) {
                const gp_Pnt2d uv = tri->UVNode(i);
                props.SetParameters(uv.X(), uv.Y());
                if (!props.IsNormalDefined())
                    continue;
                gp_Dir n = props.Normal().Transformed(surfaceTrsf);
                if (reversed)
                    n.Reverse();
                normals[static_cast<std::size_t>(i - 1)] = toVec3(n.XYZ());
            }
        }
        const auto base = static_cast<unsigned int>(mesh.vertices.size());
        mesh.vertices.insert(mesh.vertices.end(), points.begin(), points.end());
        mesh.normals.insert(mesh.normals.end(), normals.begin(), normals.end());
        for (unsigned int i : indices)
            mesh.indices.push_back(base + i);
        return sizes;
    }

    // The shape's vertices, and with edges asked for, one strip per edge: from the edge's own
    // polygon, the polygon on a face's triangulation, or else its curve discretised with the
    // meshing tolerances.
    void makeTopology(ShapeInfo& info, const FaceIndex& faceIndex) const {
        const TopoDS_Shape& shape = info.shape;
        TopTools_IndexedMapOfShape vertices;
        TopExp::MapShapes(shape, TopAbs_VERTEX, vertices);
        for (int v = 1; v <= vertices.Extent(); ++v)
            info.vertices.push_back(toVec3(BRep_Tool::Pnt(TopoDS::Vertex(vertices(v))).XYZ()));
        if (!m_options.edges)
            return;
        qrnsg::Polyline& out = info.edges;
        TopTools_IndexedMapOfShape edges;
        TopExp::MapShapes(shape, TopAbs_EDGE, edges);
        TopTools_IndexedDataMapOfShapeListOfShape faces;
        TopExp::MapShapesAndAncestors(shape, TopAbs_EDGE, TopAbs_FACE, faces);
        const double angular =
            m_options.angularDeflection > 0.0 ? m_options.angularDeflection : 0.5;
        std::vector<Vec3> strip;
        for (int e = 1; e <= edges.Extent(); ++e) {
            const TopoDS_Edge& edge = TopoDS::Edge(edges(e));
            strip.clear();
            try {
                if (BRep_Tool::Degenerated(edge))
                    continue;
                TopLoc_Location loc;
                const Handle(Poly_Polygon3D)& polygon = BRep_Tool::Polygon3D(edge, loc);
                if (!polygon.IsNull() && polygon->NbNodes() >= 2) {
                    const gp_Trsf trsf = loc.Transformation();
                    for (int i = 1; i <= polygon->NbNodes(); ++i)
                        strip.push_back(toVec3(polygon->Nodes().Value(i).Transformed(trsf).XYZ()));
                }
                if (strip.empty())
                    if (const TopTools_ListOfShape* owners = faces.Seek(edge))
                        for (TopTools_ListOfShape::Iterator f(*owners); f.More() && strip.empty();
                             f.Next()) {
                            TopLoc_Location faceLoc;
                            const Handle(Poly_Triangulation)& tri =
                                BRep_Tool::Triangulation(TopoDS::Face(f.Value()), faceLoc);
                            if (tri.IsNull())
                                continue;
                            const Handle(Poly_PolygonOnTriangulation)& onTri =
                                BRep_Tool::PolygonOnTriangulation(edge, tri, faceLoc);
                            if (onTri.IsNull())
                                continue;
                            const gp_Trsf trsf = faceLoc.Transformation();
                            for (int i = 1; i <= onTri->NbNodes(); ++i) {
                                const int node = onTri->Node(i);
                                if (node >= 1 && node <= tri->NbNodes())
                                    strip.push_back(
                                        toVec3(tri->Node(node).Transformed(trsf).XYZ()));
                            }
                        }
                if (strip.empty() && BRep_Tool::IsGeometric(edge)) {
                    BRepAdaptor_Curve curve(edge);
                    GCPnts_TangentialDeflection points(curve, angular, m_deflection);
                    for (int i = 1; i <= points.NbPoints(); ++i)
                        strip.push_back(toVec3(points.Value(i).XYZ()));
                }
            } catch (const Standard_Failure&) {
                strip.clear(); // an edge without usable geometry is left out
            }
            if (strip.size() < 2)
                continue;
            PartEntities::Edge entity;
            entity.strip = static_cast<unsigned int>(out.stripCount());
            out.addStrip(strip);
            try {
                entity.curve = curveOf(edge, strip);
            } catch (const Standard_Failure&) {
                entity.curve = PartEntities::Curve(); // drawn, but of no known curve
            }
            TopoDS_Vertex first, last;
            TopExp::Vertices(edge, first, last);
            entity.vertices[0] = first.IsNull() ? -1 : vertices.FindIndex(first) - 1;
            entity.vertices[1] = last.IsNull() ? -1 : vertices.FindIndex(last) - 1;
            int bounded = 0;
            if (const TopTools_ListOfShape* owners = faces.Seek(edge))
                for (TopTools_ListOfShape::Iterator f(*owners); f.More() && bounded < 2; f.Next())
                    if (const int* index = faceIndex.Seek(f.Value()))
                        if (bounded == 0 || entity.faces[0] != *index)
                            entity.faces[bounded++] = *index;
            info.edgeEntities.push_back(entity);
        }
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
    qrn::IStatusManager* m_status;
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
                          qrn::IStatusManager* status) {
    model = ModelData();
    if (document.IsNull() || !XCAFDoc_DocumentTool::IsXCAFDocument(document)) {
        error = "not an XCAF document";
        return false;
    }
    try {
        Importer importer(document, options, model, status);
        importer.run();
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
    if (options.pmi) {
        try {
            // A crash in the PMI costs the PMI, not the model.
            OCC_CATCH_SIGNALS
            PmiImporter::import(document, model);
        } catch (const Standard_Failure& e) {
            if (status)
                status->setStatus(L"PMI left out: " +
                                  qrnplatform::Text::fromUtf8(e.GetMessageString()));
        }
    }
    return true;
}

} // namespace qrnviewer
