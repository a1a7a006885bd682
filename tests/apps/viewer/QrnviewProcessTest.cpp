// qrnview run as a user runs it: exit codes, messages and the files it writes.
#include "ViewerTestSupport.h"

#include <gmock/gmock.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <regex>
#include <vector>

namespace {

using namespace viewertest;
using ::testing::AllOf;
using ::testing::HasSubstr;

const fs::path kNist = fs::path(QRN_SHARED_MODELS) / "nist_ctc_01_asme1_ap242-e1.stp";

TEST(QrnviewProcessTest, PrintsPicturesLargerThanTheScreenSmoothAndTransparent) {
    if (!std::getenv("DISPLAY"))
        GTEST_SKIP() << "*** needs an X display for pixel buffers: run under xvfb-run ***";
    TempDir dir;
    ProcessResult run = qrnview("--snapshot " + dir.quoted("big.png") +
                                " --size 4000x3000 --samples 4 --transparent");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_THAT(run.output, HasSubstr("pixel buffer, 4 samples, transparent background"));
    const qrnimage::Image image = loadPng(dir.file("big.png"));
    ASSERT_TRUE(image.width() == 4000u && image.height() == 3000u);
    // Alpha 0 all round the model, opaque in its middle, and in between only along its
    // outline, where the samples smooth the edges.
    std::size_t clear = 0, opaque = 0, partial = 0;
    for (unsigned y = 0; y < image.height(); y += 2)
        for (unsigned x = 0; x < image.width(); x += 2) {
            const std::uint8_t a = image.pixel(x, y)[3];
            (a == 0 ? clear : a == 255 ? opaque : partial) += 1;
        }
    EXPECT_TRUE(image.pixel(0, 0)[3] == 0 && image.pixel(3999, 2999)[3] == 0);
    EXPECT_EQ(image.pixel(2000, 1500)[3], 255);
    EXPECT_GT(clear, 1000000u);
    EXPECT_GT(opaque, 300000u);
    EXPECT_GT(partial, 2000u) << "no smoothed edges";

    // Beyond what the driver draws: a message that says how large a picture can be.
    run = qrnview("--snapshot " + dir.quoted("huge.png") + " --size 40000x100");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output,
                HasSubstr("cannot draw a 40000x100 picture off screen: this OpenGL driver "
                          "draws off-screen pictures of at most"));
    EXPECT_FALSE(fs::exists(dir.file("huge.png")));
}

TEST(QrnviewProcessTest, DrawsThroughThePluginsBesideItOrInTheConfiguredFolder) {
    // A copy of qrnview alone in a folder has no plug-in to draw with, until the "Plugins"
    // setting names the folder the build's plug-ins are in.
    TempDir dir;
    fs::create_directories(dir.path / "alone");
    fs::copy_file(QRNVIEW_EXE, dir.path / "alone" / "qrnview");
    const std::string command = "XDG_CONFIG_HOME=" + dir.quoted("config") + " " +
                                dir.quoted("alone/qrnview") + " --snapshot " + dir.quoted("x.png") +
                                " --size 64x48";
    const ProcessResult alone = runCommand(command);
    EXPECT_EQ(alone.exitCode, 1);
    EXPECT_THAT(alone.output,
                HasSubstr("no renderer plug-in can draw this document (0 loaded from"));
    EXPECT_FALSE(fs::exists(dir.file("x.png")));
    fs::create_directories(dir.path / "config" / "qrnview");
    std::ofstream(dir.file("config/qrnview/settings.ini"))
        << "[Settings\\Renderer]\nPlugins=" << fs::path(QRNVIEW_EXE).parent_path().string() << "\n";
    const ProcessResult configured = runCommand(command);
    EXPECT_EQ(configured.exitCode, 0) << configured.output;
    EXPECT_TRUE(fs::exists(dir.file("x.png")));
    // A damaged line costs a warning, not the settings that still read; the picture is
    // replaced whole, with nothing left beside it.
    std::ofstream(dir.file("config/qrnview/settings.ini"), std::ios::app) << "\x01 garbage\n";
    const ProcessResult damaged = runCommand(command);
    EXPECT_EQ(damaged.exitCode, 0) << damaged.output;
    EXPECT_THAT(damaged.output, HasSubstr("settings.ini line 3 is not text; defaults stand in"));
    EXPECT_FALSE(fs::exists(dir.file("x.png.new")));
}

// Bad arguments: exit code 2 with a message and the usage; bad input files: exit code 1 with a
// message that names the file, and no picture.
TEST(QrnviewProcessTest, RefusesBadCommandLinesAndBadInput) {
    for (const char* args : {"--view sideways --snapshot x.png",
                             "--size 0x10 --snapshot x.png",
                             "--size big --snapshot x.png",
                             "--snapshot",
                             "--frobnicate",
                             "a.step b.step --snapshot x.png",
                             "--samples 8 --snapshot x.png",
                             "--transparent",
                             "--frame-budget -1",
                             "--frame-budget 33ms",
                             "--time-limit -1",
                             "--time-limit soon",
                             "--pick 5",
                             "--pick 5,x",
                             "--size 320x240 --pick 400,10",
                             "--select solid",
                             "--pmi maybe --snapshot x.png",
                             "--section w",
                             "--section x@",
                             "--section y@2mm",
                             "--flip",
                             "--caps part",
                             "--section x --caps none",
                             "--replay '' --snapshot x.png",
                             "--measure 1,2,3",
                             "--size 320x240 --measure 1,1,400,1"}) {
        const ProcessResult run = qrnview(args);
        EXPECT_EQ(run.exitCode, 2) << args << "\n" << run.output;
        EXPECT_THAT(run.output, HasSubstr("qrnview: ")) << args;
        EXPECT_THAT(run.output, HasSubstr("usage: qrnview")) << args;
    }
    // An event log that is a folder is refused; an empty one replays nothing, and says so.
    {
        TempDir logs;
        fs::create_directories(logs.path / "folder.log");
        std::ofstream(logs.file("empty.log")) << "# qrnview event log\n";
        ProcessResult run = qrnview("--replay " + logs.quoted("folder.log") + " --snapshot " +
                                    logs.quoted("f.png") + " --size 64x48");
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.output, HasSubstr("it is a folder"));
        run = qrnview("--replay " + logs.quoted("empty.log") + " --snapshot " +
                      logs.quoted("e.png") + " --size 64x48");
        EXPECT_EQ(run.exitCode, 0) << run.output;
        EXPECT_THAT(run.output, HasSubstr("holds no events: nothing replayed"));
    }
    const ProcessResult help = qrnview("--help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, HasSubstr("--snapshot"));

    TempDir dir;
    std::ofstream(dir.file("notes.step")) << "This is not a CAD file.\n";
    std::ofstream(dir.file("notes.xyz")) << "1 2 3\n";
    std::ofstream(dir.file("truncated.stp")) << "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('cut'),";
    fs::create_directories(dir.path / "folder.step");
    for (const std::string& file :
         {dir.file("missing.step"), dir.file("notes.step"), dir.file("truncated.stp"),
          dir.file("folder.step"), dir.file("notes.xyz")}) {
        const ProcessResult run = qrnview("'" + file + "' --snapshot " + dir.quoted("out.png"));
        EXPECT_EQ(run.exitCode, 1) << file << "\n" << run.output;
        EXPECT_THAT(run.output, HasSubstr(file));
        EXPECT_FALSE(fs::exists(dir.file("out.png"))) << file << ": wrote a picture anyway";
    }
}

TEST(QrnviewProcessTest, AMeshOnlyModelShowsInEveryRenderMode) {
    // A cube as bare triangles (ASCII STL): the edge views draw its twelve edges.
    TempDir dir;
    {
        std::ofstream stl(dir.file("cube.stl"));
        stl << "solid cube\n";
        const int faces[6][4][3] = {{{0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}},
                                    {{0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}},
                                    {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}},
                                    {{0, 1, 0}, {0, 1, 1}, {1, 1, 1}, {1, 1, 0}},
                                    {{0, 0, 0}, {0, 0, 1}, {0, 1, 1}, {0, 1, 0}},
                                    {{1, 0, 0}, {1, 1, 0}, {1, 1, 1}, {1, 0, 1}}};
        for (const auto& f : faces)
            for (int tri = 0; tri < 2; ++tri) {
                stl << " facet normal 0 0 0\n  outer loop\n";
                for (int k : {0, tri + 1, tri + 2})
                    stl << "   vertex " << f[k][0] << " " << f[k][1] << " " << f[k][2] << "\n";
                stl << "  endloop\n endfacet\n";
            }
        stl << "endsolid cube\n";
    }
    for (int presses : {2, 3}) { // V: shaded, wireframe, hidden line
        std::ofstream log(dir.file("v.log"));
        for (int i = 0; i < presses; ++i)
            log << 10 * i << " keydown - 0 10 10 0 86\n" << 10 * i + 5 << " keyup - 0 10 10 0 86\n";
        log.close();
        const ProcessResult run =
            qrnview(dir.quoted("cube.stl") + " --size 160x120 --replay " + dir.quoted("v.log") +
                    " --snapshot " + dir.quoted("v.png"));
        ASSERT_EQ(run.exitCode, 0) << run.output;
        EXPECT_THAT(run.output, HasSubstr(presses == 2 ? "wireframe" : "hidden line"));
        EXPECT_GT(pixels(loadPng(dir.file("v.png")), [](auto p) { return !background(p); }).count,
                  100u)
            << presses;
    }
}

TEST(QrnviewProcessTest, DrawsTheDemoAndPicksNamesAndHighlightsWhatLiesAtAPixel) {
    // In the 320x240 iso view of the demo: a bolt's head, nothing.
    ProcessResult run = qrnview("--size 320x240 --pick 165,133 --pick 5,5 --select part");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_THAT(run.output,
                HasSubstr("pick 165,133: part Bolt 1 (Bolt M8x16): 10 faces, 21 edges"));
    EXPECT_THAT(run.output, HasSubstr("pick 5,5: nothing"));
    run = qrnview("--size 320x240 --pick 165,133 --select face");
    EXPECT_THAT(run.output, HasSubstr("pick 165,133: face "));
    EXPECT_THAT(run.output, HasSubstr(" of Bolt 1 (Bolt M8x16): planar face"));

    // Drawn into a PNG file, each stage saying how long it took, the demo fills a good share of
    // the picture; the picked part is drawn in the selection colour.
    TempDir dir;
    const auto picture = [&](const std::string& args) {
        const ProcessResult r = qrnview("--size 320x240 --snapshot " + dir.quoted("p.png") + args);
        EXPECT_EQ(r.exitCode, 0) << r.output;
        for (const std::string stage : {"meshing", "preparing"})
            EXPECT_THAT(r.output, ::testing::ContainsRegex(stage + " +[0-9]+\\.[0-9]{2} s\n"));
        return loadPng(dir.file("p.png"));
    };
    const qrnimage::Image plain = picture(""), picked = picture(" --pick 165,133 --select part");
    EXPECT_GT(pixels(plain, [](auto p) { return !background(p); }).count, 320u * 240u / 10);
    EXPECT_GT(pixels(picked, selectionTint).count, pixels(plain, selectionTint).count + 40);
}

// Between two corners of the base plate in the 320x240 iso view: what was picked, the kind,
// the value in the document's unit; the label is in the picture. Nothing at a pixel fails.
TEST(QrnviewProcessTest, MeasuresBetweenTwoPixelsAndDrawsTheLabel) {
    TempDir dir;
    ProcessResult run =
        qrnview("--size 320x240 --measure 259,144,202,187 --snapshot " + dir.quoted("m.png"));
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_THAT(run.output, HasSubstr("measure 259,144 to 202,187: vertex 13 of Base Plate: at "
                                      "(110.5, 65, 12) mm and vertex 11 of Base Plate: at (110.5, "
                                      "-65, 12) mm: distance 130.00  mm (exact)"));
    run = qrnview("--size 320x240 --snapshot " + dir.quoted("plain.png"));
    const auto labelled = loadPng(dir.file("m.png")), plain = loadPng(dir.file("plain.png"));
    std::size_t differing = 0;
    for (unsigned int y = 0; y < 240; ++y)
        for (unsigned int x = 0; x < 320; ++x)
            differing += std::memcmp(labelled.pixel(x, y), plain.pixel(x, y), 3) != 0;
    EXPECT_GT(differing, 200u) << "no label drawn";
    run = qrnview("--size 320x240 --measure 259,144,5,5");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.output, HasSubstr("nothing to measure at 5,5"));
}

TEST(QrnviewProcessTest, CutsTheModelAndPicksOnTheCut) {
    // Through the demo's middle height: the shaft is cut, its cap picked with the point.
    ProcessResult run = qrnview("--size 320x240 --section z --pick 170,110 --select part");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_THAT(run.output, HasSubstr("cut along Z, Offset: 0.00 mm, caps in part colours"));
    EXPECT_THAT(run.output, ::testing::ContainsRegex("pick 170,110: part Shaft [^\n]*; cut at "
                                                     "\\([-0-9.]+, [-0-9.]+, 51\\) mm"));
    TempDir dir;
    run = qrnview("--size 320x240 --section z@-5 --flip --caps single --hatch --profile "
                  "--snapshot " +
                  dir.quoted("cut.png"));
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_THAT(run.output, HasSubstr("cut along Z (flipped), Offset: -5.00 mm, caps in one "
                                      "colour, hatched, profile on"));
    // An offset past the model leaves no picture and says why.
    run = qrnview("--size 320x240 --section x@-900 --snapshot " + dir.quoted("no.png"));
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.output, HasSubstr("offset -900 along X lies outside the model"));
    EXPECT_FALSE(fs::exists(dir.file("no.png")));
}

TEST(QrnviewProcessTest, AScenesStateIsSavedAndRestoredOrRefusedWhole) {
    TempDir dir;
    const auto run = [&](const std::string& args, int expected) {
        const ProcessResult r = qrnview("--size 160x120 " + args);
        EXPECT_EQ(r.exitCode, expected) << args << "\n" << r.output;
        return r.output;
    };
    const auto same = [&](const char* a, const char* b) {
        const qrnimage::Image x = loadPng(dir.file(a)), y = loadPng(dir.file(b));
        for (unsigned int row = 0; row < y.height(); ++row)
            for (unsigned int col = 0; col < y.width(); ++col)
                if (std::memcmp(x.pixel(col, row), y.pixel(col, row), 4) != 0)
                    return false;
        return true;
    };
    // Cut, exploded and turned, saved; restored on a fresh start: the same picture.
    EXPECT_THAT(run("--section z --explode --view front --snapshot " + dir.quoted("a.png") +
                        " --save-state " + dir.quoted("s.state"),
                    0),
                HasSubstr("scene state saved to"));
    run("--state " + dir.quoted("s.state") + " --snapshot " + dir.quoted("b.png"), 0);
    EXPECT_TRUE(same("a.png", "b.png"));
    EXPECT_FALSE(fs::exists(dir.file("s.state.new"))) << "written aside, then renamed";

    // In a session: explode (0), save (F2), explode further and turn to the back (2), restore
    // (F3): the parts and the camera move back, and end as the saved state shows them.
    {
        std::ofstream log(dir.file("session.log"));
        const int keys[][2] = {{0, 48}, {1000, 113}, {1100, 48}, {1200, 50}, {4000, 114}};
        for (const auto& k : keys)
            log << k[0] << " keydown - 0 10 10 0 " << k[1] << "\n"
                << k[0] + 5 << " keyup - 0 10 10 0 " << k[1] << "\n";
        log << "8000 wait - 0 0 0 0 0\n";
    }
    EXPECT_THAT(run("--replay " + dir.quoted("session.log") + " --snapshot " + dir.quoted("d.png") +
                        " --save-state " + dir.quoted("t.state"),
                    0),
                HasSubstr("scene state restored from"));
    run("--state " + dir.quoted("t.state") + " --snapshot " + dir.quoted("e.png"), 0);
    EXPECT_TRUE(same("d.png", "e.png"));

    // Exploded, a part is picked where it is drawn: the gear, where the plate was.
    EXPECT_THAT(run("--size 320x240 --pick 205,112 --select part", 0),
                HasSubstr("pick 205,112: part Base Plate"));
    EXPECT_THAT(run("--size 320x240 --explode --pick 205,112 --select part", 0),
                HasSubstr("pick 205,112: part Gear"));

    // Not a state of this model, or not a whole one: refused, naming the file and why.
    std::ifstream in(dir.file("s.state"));
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    const struct {
        const char* name;
        std::string content;
        const char* said;
    } bad[] = {
        {"garbage.state", "this is not a state\n", "not a qrnview scene state"},
        {"short.state", text.substr(0, text.find("explode")), "stops short"},
        {"other.state", std::regex_replace(text, std::regex("nodes [0-9]+"), "nodes 5"),
         "made for a model of other parts"},
        {"part.state", std::regex_replace(text, std::regex("part 1 0 0"), "part 1 0 9"),
         "names a part the model lacks"},
    };
    for (const auto& b : bad) {
        std::ofstream(dir.file(b.name)) << b.content;
        EXPECT_THAT(run("--state " + dir.quoted(b.name) + " --snapshot " + dir.quoted("c.png"), 1),
                    AllOf(HasSubstr(b.name), HasSubstr(b.said)));
        EXPECT_FALSE(fs::exists(dir.file("c.png")));
    }
}

TEST(QrnviewProcessTest, ThePmiOfAFileShownHiddenAndInItsSavedView) {
    if (!fs::exists(kNist))
        GTEST_SKIP() << "*** shared models folder missing: " << QRN_SHARED_MODELS << " ***";
    TempDir dir;
    const auto pmiPixels = [&](const std::string& args) {
        const ProcessResult r = qrnview("'" + kNist.string() + "' --size 400x300 --snapshot " +
                                        dir.quoted("pmi.png") + " " + args);
        EXPECT_EQ(r.exitCode, 0) << args << "\n" << r.output;
        return pixels(loadPng(dir.file("pmi.png")), pmiBlue).count;
    };
    EXPECT_EQ(pmiPixels("--pmi hide"), 0u);
    // The file's saved view, by its name, shows the items it lists: all of them here.
    EXPECT_GT(pmiPixels("--view MBD_0 --pmi show"), 1000u);

    const ProcessResult unknown = qrnview("'" + kNist.string() + "' --view MBD_1 --snapshot x.png");
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_THAT(unknown.output, HasSubstr("unknown view 'MBD_1' (known: iso, "));
    EXPECT_THAT(unknown.output, HasSubstr(", MBD_0)"));
}

} // namespace
