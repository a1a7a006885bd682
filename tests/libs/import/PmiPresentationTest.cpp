// The PMI of the NIST AP242 parts as their authors drew it, checked against counts taken from
// the files' own text.
#include "ImportTestSupport.h"

#include "qrnimport/ModelReader.h"
#include "qrnimport/PmiPresentation.h"

#include <STEPControl_Reader.hxx>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

using namespace importtest;
using qrnimport::ModelReader;
using qrnimport::PmiPresentation;
using Item = ModelData::PmiItem;

// The records of a STEP file by id, each on one line, quoted texts left as they are.
std::map<int, std::string> records(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream all;
    all << in.rdbuf();
    const std::string text = all.str();
    std::map<int, std::string> out;
    std::string record;
    bool quoted = false;
    for (char c : text) {
        if (c == '\'')
            quoted = !quoted;
        if (!quoted && (c == '\n' || c == '\r'))
            continue;
        record += c;
        if (!quoted && c == ';') {
            const auto hash = record.find('#'), equals = record.find('=');
            if (hash != std::string::npos && equals != std::string::npos && hash < equals &&
                record.find("DATA;") == std::string::npos)
                out[std::stoi(record.substr(hash + 1))] = record.substr(equals + 1);
            record.clear();
        }
    }
    return out;
}

// The lists opened at a nesting depth of the record's parameters (1: its parameters).
std::vector<std::string> lists(const std::string& record, int depth) {
    std::vector<std::string> out;
    int level = 0;
    bool quoted = false;
    std::size_t start = 0;
    for (std::size_t i = 0; i < record.size(); ++i) {
        const char c = record[i];
        if (c == '\'')
            quoted = !quoted;
        if (quoted)
            continue;
        if (c == '(' && ++level == depth + 1)
            start = i + 1;
        if (c == ')' && level-- == depth + 1)
            out.push_back(record.substr(start, i - start));
    }
    return out;
}

std::vector<int> numbersIn(const std::string& list) {
    std::vector<int> out;
    std::stringstream s(list);
    std::string n;
    while (std::getline(s, n, ','))
        out.push_back(std::atoi(n.c_str() + n.find_first_not_of(" #")));
    return out;
}

bool starts(const std::string& record, const char* type) {
    return record.rfind(type, 0) == 0;
}

std::wstring firstText(const std::string& record) {
    const auto a = record.find('\''), b = record.find('\'', a + 1);
    const std::string t = record.substr(a + 1, b - a - 1);
    return std::wstring(t.begin(), t.end());
}

TEST(PmiPresentationFiles, TheNistPartsComeAsTheirAuthorsDrewThem) {
    SKIP_WITHOUT_SHARED_MODELS();
    const struct {
        const char* file;
        std::size_t items, presented;
        bool partsReadByOcct;
    } files[] = {{"nist_ctc_01_asme1_ap242-e1.stp", 23, 23, true},
                 {"nist_ftc_08_asme1_ap242-2.stp", 60, 60, false}};
    for (const auto& f : files) {
        SCOPED_TRACE(f.file);
        const std::string path = sharedModel(f.file);
        const auto text = records(path);
        // From the text: polylines of the curve sets, filled sets, the views' annotations.
        std::size_t polylines = 0, fillSets = 0, fillTriangles = 0, solidTriangles = 0;
        std::map<std::wstring, std::multiset<std::wstring>> views;
        std::set<int> solidFaces; // shells of supplemental geometry are not the part
        for (const auto& r : text)
            if (starts(r.second, "TESSELLATED_SOLID("))
                for (int id : numbersIn(lists(r.second, 1).front()))
                    solidFaces.insert(id);
        for (const auto& r : text) {
            if (starts(r.second, "TESSELLATED_CURVE_SET("))
                polylines += lists(r.second, 2).size();
            if (starts(r.second, "COMPLEX_TRIANGULATED_SURFACE_SET("))
                ++fillSets;
            const bool face = solidFaces.count(r.first) > 0;
            const bool surface = starts(r.second, "COMPLEX_TRIANGULATED_SURFACE_SET(");
            if (face || surface) {
                // Strips and fans are the last two parameters: lists of index lists.
                const auto top = lists(r.second, 1);
                for (std::size_t p = top.size() >= 2 ? top.size() - 2 : 0; p < top.size(); ++p)
                    for (const auto& strip : lists("(" + top[p] + ")", 1)) {
                        const auto s = numbersIn(strip);
                        for (std::size_t t = 2; t < s.size(); ++t) {
                            const bool fan = p + 1 == top.size();
                            const int a = fan ? s[0] : s[t - 2], b = s[t - 1], c = s[t];
                            if (a != b && b != c && a != c)
                                ++(face ? solidTriangles : fillTriangles);
                        }
                    }
            }
            const auto name = r.second.find("REPRESENTATION('MBD_");
            if (r.second.find("DRAUGHTING_MODEL()") != std::string::npos &&
                name != std::string::npos) {
                const auto params = lists(r.second.substr(name), 1);
                ASSERT_FALSE(params.empty());
                const std::string items = params.front();
                auto& shown = views[firstText(r.second.substr(name))];
                for (int id : numbersIn(items))
                    if (starts(text.at(id), "TESSELLATED_ANNOTATION_OCCURRENCE(") ||
                        starts(text.at(id), "DRAUGHTING_CALLOUT("))
                        shown.insert(firstText(text.at(id)));
            }
        }
        ASSERT_GT(polylines, 100u);

        // What the reader takes from the STEP model.
        STEPControl_Reader reader;
        ASSERT_EQ(reader.ReadFile(path.c_str()), IFSelect_RetDone);
        const PmiPresentation p = PmiPresentation::read(reader.StepModel(), path, 1.0);
        EXPECT_EQ(static_cast<std::size_t>(p.counts.polylines), polylines);
        EXPECT_EQ(static_cast<std::size_t>(p.counts.fillSets), fillSets);
        EXPECT_EQ(static_cast<std::size_t>(p.counts.triangles), fillTriangles);

        // What the viewer shows.
        ModelData model;
        std::string error;
        ASSERT_TRUE(ModelReader::read(path, model, error)) << error;
        EXPECT_GT(model.triangleCount(), 0u);
        if (!f.partsReadByOcct) { // a tessellated solid, read as a part in their place
            ASSERT_EQ(model.parts.size(), 1u);
            EXPECT_EQ(model.parts[0].name, L"PartBody");
            EXPECT_EQ(model.parts[0].entities.faces.size(), 272u);
            EXPECT_EQ(model.triangleCount(), solidTriangles);
            expectWellFormed(model);
        }
        ASSERT_EQ(model.pmi.size(), f.items);
        std::size_t presented = 0, lines = 0, fills = 0;
        for (const auto& item : model.pmi) {
            SCOPED_TRACE(std::string(item.name.begin(), item.name.end()));
            if (!item.presented)
                continue;
            ++presented;
            lines += item.lines.stripCount();
            fills += item.fills.triangleCount();
            EXPECT_TRUE(item.texts.empty()) << "the author's texts, not the viewer's";
            EXPECT_TRUE(item.coloured);
            EXPECT_GT(item.lineWidth, 0.0f);
            EXPECT_FALSE(item.description.empty());
        }
        EXPECT_EQ(presented, f.presented);
        EXPECT_EQ(lines, polylines);
        EXPECT_EQ(fills, fillTriangles);
        // Each saved view lists exactly the annotations its draughting model names.
        ASSERT_EQ(model.views.size(), views.size());
        for (const auto& view : model.views) {
            SCOPED_TRACE(std::string(view.name.begin(), view.name.end()));
            ASSERT_TRUE(views.count(view.name));
            EXPECT_TRUE(view.listsPmi);
            EXPECT_EQ(view.pmi.size(), views[view.name].size());
            if (!f.partsReadByOcct) { // items that no semantic label took keep the file's name
                std::multiset<std::wstring> names;
                for (int i : view.pmi)
                    names.insert(model.pmi[static_cast<std::size_t>(i)].name);
                EXPECT_EQ(names, views[view.name]);
            }
        }
    }
}

// The semantic side of the NIST part: values in words, and the faces each item is about.
TEST(PmiPresentationFiles, ItemsSayWhatTheyMeanAndKnowTheirFaces) {
    SKIP_WITHOUT_SHARED_MODELS();
    ModelData model;
    std::string error;
    ASSERT_TRUE(ModelReader::read(sharedModel("nist_ctc_01_asme1_ap242-e1.stp"), model, error));
    std::multiset<std::wstring> said;
    std::size_t withFaces = 0;
    for (const auto& item : model.pmi) {
        said.insert(item.description);
        withFaces += item.faces.empty() ? 0 : 1;
        for (const auto& face : item.faces) {
            ASSERT_LT(static_cast<std::size_t>(face.first), model.nodes.size());
            const int part = model.nodes[static_cast<std::size_t>(face.first)].part;
            ASSERT_GE(part, 0);
            EXPECT_LT(static_cast<std::size_t>(face.second),
                      model.parts[static_cast<std::size_t>(part)].entities.faces.size());
        }
    }
    for (const wchar_t* s : {L"diameter 35 0/-0.2 mm", L"diameter 25 \u00B10.15 mm",
                             L"angle 60\u00B0 \u00B10.5\u00B0", L"datum A", L"datum C"})
        EXPECT_EQ(said.count(s), 1u) << std::string(s, s + std::wcslen(s));
    // Zones the reader leaves out (measures written as complex records) come from the file.
    EXPECT_EQ(said.count(L"position tolerance 0.75 to A B C"), 2u);
    EXPECT_EQ(said.count(L"flatness tolerance 0.2"), 1u);
    EXPECT_GE(withFaces, 18u) << "dimensions and tolerances point at faces";

    // Laid out instead: every semantic item from what it says, zones included.
    ModelReader::Options laidOut;
    laidOut.presentation = false;
    ModelData plain;
    ASSERT_TRUE(
        ModelReader::read(sharedModel("nist_ctc_01_asme1_ap242-e1.stp"), laidOut, plain, error));
    ASSERT_EQ(plain.pmi.size(), 21u);
    std::multiset<std::wstring> texts;
    for (const auto& item : plain.pmi) {
        EXPECT_FALSE(item.presented);
        ASSERT_EQ(item.texts.size(), 1u);
        texts.insert(item.texts[0].text);
    }
    EXPECT_EQ(texts.count(L"\u2316 | 0.75 | A | B | C"), 2u);
    EXPECT_EQ(texts.count(L"\u23E5 | 0.2"), 1u);
}

// Files that draw their PMI with curves: a callout of a polyline and a filled triangle,
// and a circle outside any callout, added to a written part.
TEST(PmiPresentationWritten, CurvesAndFillAreasAreDrawnAsTheFileGivesThem) {
    TempDir dir;
    ASSERT_TRUE(writeStep(makeAssembly(), dir.file("part.step")));
    std::stringstream written;
    written << std::ifstream(dir.file("part.step"), std::ios::binary).rdbuf();
    std::string text = written.str();
    const auto end = text.rfind("ENDSEC;");
    ASSERT_NE(end, std::string::npos);
    text.insert(end, R"(#9001=CARTESIAN_POINT('',(0.,0.,30.));
#9002=CARTESIAN_POINT('',(100.,0.,30.));
#9003=CARTESIAN_POINT('',(100.,50.,30.));
#9004=POLYLINE('leader',(#9001,#9002,#9003));
#9005=COLOUR_RGB('',0.8,0.1,0.1);
#9006=DRAUGHTING_PRE_DEFINED_CURVE_FONT('continuous');
#9007=CURVE_STYLE('',#9006,POSITIVE_LENGTH_MEASURE(0.5),#9005);
#9008=PRESENTATION_STYLE_ASSIGNMENT((#9007));
#9009=ANNOTATION_CURVE_OCCURRENCE('leader',(#9008),#9004);
#9010=CARTESIAN_POINT('',(0.,0.,30.));
#9011=CARTESIAN_POINT('',(-10.,3.,30.));
#9012=CARTESIAN_POINT('',(-10.,-3.,30.));
#9013=POLYLINE('',(#9010,#9011,#9012,#9010));
#9014=ANNOTATION_FILL_AREA('arrow',(#9013));
#9015=ANNOTATION_FILL_AREA_OCCURRENCE('arrow',(#9008),#9014,#9010);
#9016=DRAUGHTING_CALLOUT('Note.1',(#9009,#9015));
#9017=CARTESIAN_POINT('',(50.,25.,30.));
#9018=DIRECTION('',(0.,0.,1.));
#9019=DIRECTION('',(1.,0.,0.));
#9020=AXIS2_PLACEMENT_3D('',#9017,#9018,#9019);
#9021=CIRCLE('',#9020,5.);
#9022=ANNOTATION_CURVE_OCCURRENCE('mark',(#9008),#9021);
)");
    const std::string path = dir.write("drawn.step", text);
    STEPControl_Reader reader;
    ASSERT_EQ(reader.ReadFile(path.c_str()), IFSelect_RetDone);
    const PmiPresentation p = PmiPresentation::read(reader.StepModel(), path, 1.0);
    EXPECT_EQ(p.counts.polylines, 2);
    EXPECT_EQ(p.counts.fillSets, 1);
    EXPECT_EQ(p.counts.triangles, 1);
    ASSERT_EQ(p.annotations.size(), 2u);
    const auto& callout = p.annotations[0];
    EXPECT_EQ(callout.name, L"Note.1");
    EXPECT_EQ(callout.kind, Item::NOTE);
    EXPECT_TRUE(callout.coloured);
    EXPECT_FLOAT_EQ(callout.colour[0], 0.8f);
    EXPECT_FLOAT_EQ(callout.colour[1], 0.1f);
    EXPECT_FLOAT_EQ(callout.width, 0.5f);
    ASSERT_EQ(callout.lines.stripCount(), 2u) << "the leader and the arrow's outline";
    EXPECT_TRUE(near(callout.lines.bbox().min(), Vec3(-10, -3, 30)));
    EXPECT_TRUE(near(callout.lines.bbox().max(), Vec3(100, 50, 30)));
    ASSERT_EQ(callout.fills.triangleCount(), 1u);
    for (const auto& n : callout.fills.normals)
        EXPECT_NEAR(std::abs(n[2]), 1.0f, 1e-5f);
    // The circle, sampled, lies on its radius.
    const auto& circle = p.annotations[1];
    EXPECT_EQ(circle.name, L"mark");
    ASSERT_GT(circle.lines.points.size(), 8u);
    for (const auto& q : circle.lines.points)
        EXPECT_NEAR(q.distance(Vec3(50, 25, 30)), 5.0f, 0.02f);
}

} // namespace
