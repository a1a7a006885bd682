// qrnview run as a user runs it: exit codes, messages and the files it writes.
#include "qrnimage/Image.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct ProcessResult {
    int exitCode = -1;
    std::string output; // stdout and stderr together
};

// Runs a shell command line, its output merged.
ProcessResult runCommand(const std::string& command) {
    ProcessResult run;
    std::FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return run;
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        run.output.append(buffer, n);
    int status = pclose(pipe);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return run;
}

ProcessResult qrnview(const std::string& args) {
    return runCommand(std::string("'") + QRNVIEW_EXE + "' " + args + " 2>&1");
}

// The pixels of a PNG file that a test says yes to.
std::size_t countPixels(const std::string& file,
                        const std::function<bool(const std::uint8_t*)>& is) {
    qrnimage::Image image;
    std::string error;
    EXPECT_TRUE(qrnimage::Image::loadPng(file, image, &error)) << error;
    std::size_t count = 0;
    for (unsigned y = 0; y < image.height(); ++y)
        for (unsigned x = 0; x < image.width(); ++x)
            count += is(image.pixel(x, y)) ? 1 : 0;
    return count;
}

class QrnviewProcessTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() /
              ("qrnview-test-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
               "-" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
    std::string path(const std::string& name) const { return (dir / name).string(); }
    fs::path dir;
};

TEST_F(QrnviewProcessTest, DrawsTheDemoAssemblyIntoAPng) {
    ProcessResult run =
        qrnview("--snapshot '" + path("demo.png") + "' --size 200x150 --view front");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    // Each stage says how long it took.
    for (const char* stage : {"meshing", "preparing"})
        EXPECT_TRUE(std::regex_search(run.output,
                                      std::regex(std::string(stage) + " +[0-9]+\\.[0-9]{2} s\n")))
            << stage << " in\n"
            << run.output;
    qrnimage::Image image;
    ASSERT_TRUE(qrnimage::Image::loadPng(path("demo.png"), image, nullptr));
    EXPECT_TRUE(image.width() == 200u && image.height() == 150u);
    // Not an empty picture: a good share of it differs from the background.
    EXPECT_GT(countPixels(path("demo.png"),
                          [](const std::uint8_t* p) { return p[0] != 230 || p[1] != 230; }),
              200u * 150u / 10);
}

TEST_F(QrnviewProcessTest, PrintsPicturesLargerThanTheScreenSmoothAndTransparent) {
    if (!std::getenv("DISPLAY"))
        GTEST_SKIP() << "*** needs an X display for pixel buffers: run under xvfb-run ***";
    ProcessResult run =
        qrnview("--snapshot '" + path("big.png") + "' --size 4000x3000 --samples 4 --transparent");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("pixel buffer, 4 samples, transparent background"), std::string::npos)
        << run.output;
    qrnimage::Image image;
    std::string error;
    ASSERT_TRUE(qrnimage::Image::loadPng(path("big.png"), image, &error)) << error;
    ASSERT_EQ(image.width(), 4000u);
    ASSERT_EQ(image.height(), 3000u);
    // Alpha 0 all round the model, opaque in its middle, and in between only along its
    // outline, where the samples smooth the edges.
    std::size_t clear = 0, opaque = 0, partial = 0;
    for (unsigned y = 0; y < image.height(); y += 2)
        for (unsigned x = 0; x < image.width(); x += 2) {
            const std::uint8_t a = image.pixel(x, y)[3];
            (a == 0 ? clear : a == 255 ? opaque : partial) += 1;
        }
    EXPECT_EQ(image.pixel(0, 0)[3], 0);
    EXPECT_EQ(image.pixel(3999, 2999)[3], 0);
    EXPECT_EQ(image.pixel(2000, 1500)[3], 255);
    EXPECT_GT(clear, 1000000u);
    EXPECT_GT(opaque, 300000u);
    EXPECT_GT(partial, 2000u) << "no smoothed edges";

    // Beyond what the driver draws: a message that says how large a picture can be.
    run = qrnview("--snapshot '" + path("huge.png") + "' --size 40000x100");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("cannot draw a 40000x100 picture off screen: this OpenGL driver "
                              "draws off-screen pictures of at most"),
              std::string::npos)
        << run.output;
    EXPECT_FALSE(fs::exists(path("huge.png")));
}

TEST_F(QrnviewProcessTest, DrawsThroughThePluginsBesideItOrInTheConfiguredFolder) {
    // A copy of qrnview alone in a folder has no plug-in to draw with.
    const fs::path copy = dir / "alone" / "qrnview";
    fs::create_directories(copy.parent_path());
    fs::copy_file(QRNVIEW_EXE, copy);
    const std::string command = "XDG_CONFIG_HOME='" + path("config") + "' '" + copy.string() +
                                "' --snapshot '" + path("x.png") + "' --size 64x48 2>&1";
    ProcessResult alone = runCommand(command);
    EXPECT_EQ(alone.exitCode, 1);
    EXPECT_NE(alone.output.find("no renderer plug-in can draw this document (0 loaded from"),
              std::string::npos)
        << alone.output;
    EXPECT_FALSE(fs::exists(path("x.png")));

    // The "Plugins" setting names the folder the build's plug-ins are in.
    fs::create_directories(path("config/qrnview"));
    std::ofstream(path("config/qrnview/settings.ini"))
        << "[Settings\\Renderer]\nPlugins=" << fs::path(QRNVIEW_EXE).parent_path().string() << "\n";
    ProcessResult configured = runCommand(command);
    EXPECT_EQ(configured.exitCode, 0) << configured.output;
    EXPECT_TRUE(fs::exists(path("x.png")));
}

TEST_F(QrnviewProcessTest, RefusesBadCommandLines) {
    for (const char* args : {"--view sideways --snapshot x.png", "--size 0x10 --snapshot x.png",
                             "--size big --snapshot x.png", "--snapshot", "--frobnicate",
                             "a.step b.step --snapshot x.png", "--samples 8 --snapshot x.png",
                             "--transparent", "--frame-budget -1", "--frame-budget 33ms"}) {
        ProcessResult run = qrnview(args);
        EXPECT_EQ(run.exitCode, 2) << args << "\n" << run.output;
        EXPECT_NE(run.output.find("qrnview: "), std::string::npos) << args;
        EXPECT_NE(run.output.find("usage: qrnview"), std::string::npos) << args;
    }
    ProcessResult help = qrnview("--help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.output.find("--snapshot"), std::string::npos);
}

TEST_F(QrnviewProcessTest, RefusesBadInputWithAMessage) {
    std::ofstream(path("notes.step")) << "This is not a CAD file.\n";
    // A STEP file that ends in the middle of an entity.
    {
        std::ofstream truncated(path("truncated.stp"));
        truncated << "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('cut'),'2;1');\n"
                     "FILE_NAME('t','2026-01-01',(''),(''),'','','');\n"
                     "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
                     "#1=CARTESIAN_POINT('',(0.,0.,0.));\n#2=DIRECTION('',(0.,0.,1.));\n"
                     "#3=AXIS2_PLACEMENT_3D('',#1,#2,";
    }
    fs::create_directories(dir / "folder.step");
    struct Case {
        std::string file;
        const char* what;
    };
    std::ofstream(path("notes.xyz")) << "1 2 3\n";
    std::vector<Case> cases = {{path("missing.step"), "a missing file"},
                               {path("notes.step"), "a text file"},
                               {path("truncated.stp"), "a truncated STEP file"},
                               {(dir / "folder.step").string(), "a folder"},
                               {path("notes.xyz"), "an unknown kind"}};
    const fs::path empty = fs::path(QRN_SHARED_MODELS) / "nist_ftc_08_asme1_ap242-2.stp";
    if (fs::exists(empty))
        cases.push_back({empty.string(), "a file with no geometry the viewer reads"});
    else
        std::printf("*** shared models folder missing: %s ***\n", QRN_SHARED_MODELS);
    for (const Case& c : cases) {
        ProcessResult run = qrnview("'" + c.file + "' --snapshot '" + path("out.png") + "'");
        EXPECT_EQ(run.exitCode, 1) << c.what << "\n" << run.output;
        EXPECT_NE(run.output.find(c.file), std::string::npos)
            << c.what << ": the message should name the file\n"
            << run.output;
        EXPECT_FALSE(fs::exists(path("out.png"))) << c.what << ": wrote a picture anyway";
    }
}

TEST_F(QrnviewProcessTest, PicksNameWhatLiesAtAPixelAndShowItHighlighted) {
    // In the 320x240 iso view of the demo: a bolt's head, a bearing block's arc edge, nothing.
    ProcessResult run = qrnview("--size 320x240 --pick 165,133 --pick 5,5 --select part");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("pick 165,133: part Bolt 1 (Bolt M8x16): 10 faces, 21 edges"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("pick 5,5: nothing"), std::string::npos) << run.output;
    run = qrnview("--size 320x240 --pick 165,133 --select face");
    EXPECT_NE(run.output.find("pick 165,133: face "), std::string::npos) << run.output;
    EXPECT_NE(run.output.find(" of Bolt 1 (Bolt M8x16): planar face"), std::string::npos)
        << run.output;

    // With a picture, the picked part is drawn in the selection colour.
    const auto tinted = [&](const std::string& args) {
        ProcessResult r = qrnview("--size 320x240 --snapshot '" + path("p.png") + "' " + args);
        EXPECT_EQ(r.exitCode, 0) << r.output;
        return countPixels(path("p.png"), [](const std::uint8_t* p) {
            return p[0] > p[1] + 60 && p[2] > p[1] + 50;
        });
    };
    EXPECT_GT(tinted("--pick 165,133 --select part"), tinted("") + 40);

    for (const char* bad : {"--pick 5", "--pick 5,x", "--pick 400,10", "--select solid"}) {
        run = qrnview(std::string("--size 320x240 ") + bad);
        EXPECT_EQ(run.exitCode, 2) << bad << "\n" << run.output;
    }
}

TEST_F(QrnviewProcessTest, ThePmiOfAFileShownHiddenAndInItsSavedView) {
    const fs::path file = fs::path(QRN_SHARED_MODELS) / "nist_ctc_01_asme1_ap242-e1.stp";
    if (!fs::exists(file))
        GTEST_SKIP() << "*** shared models folder missing: " << QRN_SHARED_MODELS << " ***";
    // Pixels in the PMI's dark blue.
    const auto pmiPixels = [&](const std::string& args) {
        ProcessResult r = qrnview("'" + file.string() + "' --size 400x300 --snapshot '" +
                                  path("pmi.png") + "' " + args);
        EXPECT_EQ(r.exitCode, 0) << args << "\n" << r.output;
        return countPixels(path("pmi.png"), [](const std::uint8_t* p) {
            return std::abs(p[0] - 13) <= 3 && std::abs(p[1] - 38) <= 3 &&
                   std::abs(p[2] - 153) <= 3;
        });
    };
    EXPECT_GT(pmiPixels(""), 1000u) << "shown by default";
    EXPECT_EQ(pmiPixels("--pmi hide"), 0u);
    // The file's saved view, by its name, shows the items it lists: all of them here.
    EXPECT_GT(pmiPixels("--view MBD_0"), 1000u);
    EXPECT_GT(pmiPixels("--view top --pmi show"), 1000u);

    ProcessResult unknown = qrnview("'" + file.string() + "' --view MBD_1 --snapshot x.png");
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_NE(unknown.output.find("unknown view 'MBD_1' (known: iso, "), std::string::npos)
        << unknown.output;
    EXPECT_NE(unknown.output.find(", MBD_0)"), std::string::npos) << unknown.output;
    EXPECT_EQ(qrnview("--pmi maybe --snapshot x.png").exitCode, 2);
}

} // namespace
