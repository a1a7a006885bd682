// qrnview run as a user runs it: exit codes, messages and the files it writes.
#include "qrnimage/Image.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;

struct ProcessResult {
    int exitCode = -1;
    std::string output; // stdout and stderr together
};

ProcessResult qrnview(const std::string& args) {
    std::string command = std::string("'") + QRNVIEW_EXE + "' " + args + " 2>&1";
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
    qrnimage::Image image;
    std::string error;
    ASSERT_TRUE(qrnimage::Image::loadPng(path("demo.png"), image, &error)) << error;
    EXPECT_EQ(image.width(), 200u);
    EXPECT_EQ(image.height(), 150u);
    // Not an empty picture: a good share of it differs from the background.
    std::size_t model = 0;
    for (unsigned y = 0; y < image.height(); ++y)
        for (unsigned x = 0; x < image.width(); ++x)
            if (image.pixel(x, y)[0] != 230 || image.pixel(x, y)[1] != 230)
                ++model;
    EXPECT_GT(model, image.width() * image.height() / 10);
}

TEST_F(QrnviewProcessTest, RefusesBadCommandLines) {
    for (const char* args : {"--view sideways --snapshot x.png", "--size 0x10 --snapshot x.png",
                             "--size big --snapshot x.png", "--snapshot", "--frobnicate",
                             "a.step b.step --snapshot x.png"}) {
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
    for (const Case& c :
         {Case{path("missing.step"), "a missing file"}, Case{path("notes.step"), "a text file"},
          Case{path("truncated.stp"), "a truncated STEP file"},
          Case{(dir / "folder.step").string(), "a folder"},
          Case{path("notes.xyz"), "an unknown kind"}}) {
        if (c.file == path("notes.xyz"))
            std::ofstream(c.file) << "1 2 3\n";
        ProcessResult run = qrnview("'" + c.file + "' --snapshot '" + path("out.png") + "'");
        EXPECT_EQ(run.exitCode, 1) << c.what << "\n" << run.output;
        EXPECT_NE(run.output.find(c.file), std::string::npos)
            << c.what << ": the message should name the file\n"
            << run.output;
        EXPECT_FALSE(fs::exists(path("out.png"))) << c.what << ": wrote a picture anyway";
    }
}

TEST_F(QrnviewProcessTest, RefusesAFileWithNoReadableGeometry) {
    const fs::path file = fs::path(QRN_SHARED_MODELS) / "nist_ftc_08_asme1_ap242-2.stp";
    if (!fs::exists(file))
        GTEST_SKIP() << "*** shared models folder missing: " << QRN_SHARED_MODELS << " ***";
    ProcessResult run = qrnview("'" + file.string() + "' --snapshot '" + path("out.png") + "'");
    EXPECT_EQ(run.exitCode, 1) << run.output;
    EXPECT_NE(run.output.find("geometry"), std::string::npos) << run.output;
    EXPECT_FALSE(fs::exists(path("out.png")));
}

} // namespace
