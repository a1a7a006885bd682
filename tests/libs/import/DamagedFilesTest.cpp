// A corpus of damaged files made at test time from files the project writes and from the
// shared models: each is read or refused, a refusal naming the file on one line; never a
// crash, never a half-read model.
#include "ImportTestSupport.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <RWGltf_CafWriter.hxx>
#include <RWStl.hxx>
#include <TColStd_IndexedDataMapOfStringString.hxx>

#include <gmock/gmock.h>

#include <fstream>
#include <random>
#include <regex>
#include <sstream>

namespace importtest {
namespace {

std::string contents(const std::string& path) {
    std::stringstream s;
    s << std::ifstream(path, std::ios::binary).rdbuf();
    return s.str();
}

// The damaged copies of a file: cut at several points, bytes flipped at seeded places, and
// for text formats the first numbers made absurd.
std::vector<std::pair<std::string, std::string>> damaged(const std::string& name,
                                                         const std::string& data, bool text) {
    std::vector<std::pair<std::string, std::string>> out;
    for (double share : {0.02, 0.3, 0.5, 0.9, 0.999})
        out.emplace_back("cut" + std::to_string(static_cast<int>(share * 1000)) + "-" + name,
                         data.substr(0, static_cast<std::size_t>(data.size() * share)));
    std::mt19937 random(20261125);
    for (int set = 0; set < 3; ++set) {
        std::string flipped = data;
        for (int i = 0; i < 24; ++i)
            flipped[random() % flipped.size()] ^= static_cast<char>(1u << (random() % 8));
        out.emplace_back("flip" + std::to_string(set) + "-" + name, flipped);
    }
    if (text) {
        static const char* const absurd[] = {"1.E999", "-1.E999", "99999999999999999999", "NaN"};
        int n = 0;
        std::string mangled;
        static const std::regex number("[0-9]+\\.[0-9]*");
        std::sregex_iterator it(data.begin(), data.end(), number), end;
        std::size_t last = 0;
        for (; it != end && n < 400; ++it, ++n) {
            mangled +=
                data.substr(last, static_cast<std::size_t>(it->position()) - last) + absurd[n % 4];
            last = static_cast<std::size_t>(it->position() + it->length());
        }
        out.emplace_back("numbers-" + name, mangled + data.substr(last));
    }
    return out;
}

TEST(DamagedFilesTest, EveryDamagedFileIsReadOrRefusedByName) {
    TempDir dir;
    // Files the project writes: its assembly as STEP, glTF and STL.
    Handle(TDocStd_Document) doc = makeAssembly();
    ASSERT_TRUE(writeStep(doc, dir.file("assembly.step")));
    TDF_LabelSequence roots;
    XCAFDoc_DocumentTool::ShapeTool(doc->Main())->GetFreeShapes(roots);
    BRepMesh_IncrementalMesh(XCAFDoc_ShapeTool::GetShape(roots.First()), 0.1);
    RWGltf_CafWriter gltf(dir.file("assembly.glb").c_str(), true);
    ASSERT_TRUE(gltf.Perform(doc, TColStd_IndexedDataMapOfStringString(), Message_ProgressRange()));
    ASSERT_TRUE(RWStl::WriteBinary(cubeMesh(), OSD_Path(dir.file("cube.stl").c_str())));
    struct Source {
        std::string path;
        bool text;
    };
    std::vector<Source> sources = {{dir.file("assembly.step"), true},
                                   {dir.file("assembly.glb"), false},
                                   {dir.file("cube.stl"), false}};
    for (const char* shared : {"as1-oc-214-mat.stp", "motor.stl"}) {
        if (fs::exists(sharedModel(shared)))
            sources.push_back(
                {sharedModel(shared), std::string(shared).find(".stp") != std::string::npos});
        else
            ADD_FAILURE() << "shared model " << shared << " missing: ../shared/models absent?";
    }
    std::size_t read = 0, refused = 0;
    for (const auto& source : sources) {
        const std::string name = fs::path(source.path).filename().string();
        auto corpus = damaged(name, contents(source.path), source.text);
        // Its content under another format's name.
        corpus.emplace_back(name + (source.text ? ".stl" : ".step"), contents(source.path));
        for (const auto& entry : corpus) {
            const std::string path = dir.write(entry.first, entry.second);
            ModelData model;
            std::string error;
            if (ModelReader::read(path, model, error)) {
                ++read;
                expectWellFormed(model);
            } else {
                ++refused;
                EXPECT_THAT(error, ::testing::AllOf(::testing::HasSubstr(path),
                                                    ::testing::Not(::testing::HasSubstr("\n"))));
                EXPECT_TRUE(model.parts.empty() && model.nodes.empty()) << path;
            }
            fs::remove(path);
        }
    }
    std::printf("damaged files: %zu read, %zu refused\n", read, refused);
    EXPECT_GT(refused, 0u);
}

} // namespace
} // namespace importtest
