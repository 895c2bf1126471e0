// zet run: inspection programs over folders of images, through the real binary (under
// the sanitizer build too, so a run on several threads must also end cleanly).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "ZetShell.h"
#include "zet/ZetHost.h"

namespace zet::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// A folder of raw polarization frames (64 x 48: derived images are 32 x 24), each with
// its own rim-point file, and a program beside them.
class Program : public testing::Test {
 protected:
  void SetUp() override {
    m_dir = fs::path(testing::TempDir()) /
            ("zet_run_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(m_dir);
    fs::create_directories(m_dir / "frames");
  }
  void TearDown() override { fs::remove_all(m_dir); }

  // Frames named frame_1 ... frame_n, the last one PNG, each with the rim file
  // [{"x": i, "y": 2 i}].
  void Frames(int n) {
    for (int i = 1; i <= n; ++i) {
      CZetImage img;
      ASSERT_EQ(img.Create(64, 48, kZetImageMono8), kZetImageOk);
      for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) img.Row(y)[x] = static_cast<uint8_t>(x * 5 + y * 3 + i);
      const std::string stem = "frame_" + std::to_string(i);
      ASSERT_EQ(host::SaveImageFile((m_dir / "frames" / (stem + (i == n ? ".png" : ".pgm"))).string(),
                                    img), "");
      std::ofstream(m_dir / "frames" / (stem + ".rim.json"))
          << "[{\"x\": " << i << ", \"y\": " << 2 * i << "}]";
    }
  }

  fs::path Write(const std::string& program) {
    const fs::path file = m_dir / "program.json";
    std::ofstream(file) << program;
    return file;
  }

  // zet [GLOBALS] run ARGS with its standard error; the exit code.
  int Run(const std::vector<std::string>& args, std::string* err = nullptr,
          std::vector<std::string> globals = {}) {
    globals.push_back("run");
    globals.insert(globals.end(), args.begin(), args.end());
    const auto [rc, out] = RunZet(globals, SRunOptions().WithErrors());
    if (err) *err = out;
    return rc;
  }

  std::vector<Json> Lines(const fs::path& file) {
    std::vector<Json> lines;
    std::istringstream in(ReadFile(file));
    for (std::string line; std::getline(in, line);) lines.push_back(Json::parse(line));
    return lines;
  }

  fs::path m_dir;
};

constexpr const char* kProgram = R"({
  // Derived image, numbers, a string and two annotations: instructions of every kind
  // the runner passes values between.
  "images": "frames",
  "settings": {"angle_unit": "degrees"},
  "variables": {
    "rim": {"type": "point array", "file": "{stem}.rim.json"},
    "scale": {"type": "number", "value": 2.5},
    "centre": {"type": "point", "value": {"x": 6, "y": 18}}
  },
  "steps": [
    {"name": "dolp", "instr": "ProcessPolarizedImage", "params": {"output image type": 4},
     "inputs": [{"var": "image"}], "outputs": {"output image": "dolp"}},
    {"name": "sine", "instr": "Sin", "inputs": [90], "outputs": ["one"]},
    {"name": "scaled", "instr": "_Zet_Numeric_MultiplyNumbers_", "inputs": [{"var": "one"}, {"var": "scale"}],
     "outputs": ["product"]},
    {"name": "text", "instr": "PrintfNumInf", "inputs": ["%.1f", {"var": "product"}],
     "outputs": ["label"]},
    {"name": "mark", "instr": "Circle",
     "inputs": {"center": {"var": "centre"}, "radius": 4, "label": {"var": "label"}, "fill": true}},
    {"name": "rim", "instr": "Points", "inputs": [{"var": "rim"}, ""]}
  ],
  "results": ["one", "product", "label", "rim", "dolp"],
  "overlay": {"over": "dolp"}
})";

TEST_F(Program, ThreeImagesThreeResultsThreeOverlays) {
  Frames(3);
  const fs::path program = Write(kProgram);
  const fs::path out = m_dir / "out";
  std::string err;
  ASSERT_EQ(Run({"--csv", "--out", out.string(), program.string()}, &err), 0) << err;
  EXPECT_NE(err.find("3 images, 3 ok, 0 failed"), std::string::npos) << err;
  const std::vector<Json> lines = Lines(out / "results.jsonl");
  ASSERT_EQ(lines.size(), 3u);
  for (int i = 1; i <= 3; ++i) {
    SCOPED_TRACE(i);
    const Json& r = lines[i - 1];
    const std::string stem = "frame_" + std::to_string(i);
    EXPECT_EQ(fs::path(r["image"].get<std::string>()).stem(), stem);
    EXPECT_EQ(r["ok"], true);
    EXPECT_EQ(r["results"]["one"], 1.0);  // the program's degrees
    EXPECT_EQ(r["results"]["product"], 2.5);
    EXPECT_EQ(r["results"]["label"], "2.5");
    EXPECT_EQ(r["results"]["rim"], Json::parse("[{\"x\": " + std::to_string(i) + ".0, \"y\": " +
                                               std::to_string(2 * i) + ".0}]"));
    EXPECT_EQ(r["results"]["dolp"]["width"], 32);
    if (!ZET_HOST_HAS_OVERLAYS) {  // the results alone, and a word on why
      EXPECT_EQ(r["overlay"], nullptr);
      EXPECT_FALSE(fs::exists(out / (stem + ".png")));
      EXPECT_NE(err.find(host::kOverlaysUnavailable), std::string::npos) << err;
      continue;
    }
    ASSERT_EQ(r["overlay"], stem + ".png");
    CZetImage overlay;
    ASSERT_EQ(host::LoadImageFile((out / (stem + ".png")).string(), overlay), "");
    EXPECT_EQ(overlay.Width(), 32);  // drawn over the derived image
    EXPECT_EQ(overlay.Attr(), kZetImageColor32);
    const uint8_t* centre = overlay.Row(18) + 4 * 6;  // colour 0: the default, green
    EXPECT_EQ(centre[0] * 65536 + centre[1] * 256 + centre[2], 0x00FF00);
  }
  const std::string csv = ReadFile(out / "results.csv");
  EXPECT_EQ(csv.substr(0, csv.find('\r')), "image,ok,error,one,product,label,rim,dolp");
  EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 4);
  EXPECT_NE(csv.find(",true,,1.0,2.5,2.5,\"[{\"\"x\"\":1.0,\"\"y\"\":2.0}]\","), std::string::npos)
      << csv;

  // The command line's own settings win over the program's.
  ASSERT_EQ(Run({"-q", "--out", out.string(), program.string(),
                 (m_dir / "frames" / "frame_2.pgm").string()},
                &err, {"--angle-unit", "radians", "--annotation-color", "255"}),
            0) << err;
  const std::vector<Json> one = Lines(out / "results.jsonl");
  ASSERT_EQ(one.size(), 1u);
  EXPECT_NEAR(one[0]["results"]["one"].get<double>(), std::sin(90.0), 1e-15);
  if (!ZET_HOST_HAS_OVERLAYS) return;
  CZetImage red;
  ASSERT_EQ(host::LoadImageFile((out / "frame_2.png").string(), red), "");
  EXPECT_EQ(red.Row(18)[24], 255);  // (6, 18): red
  EXPECT_EQ(red.Row(18)[25], 0);
}

// A bad step stops its image with a message naming the step; the next image runs.
TEST_F(Program, FailingStepNamesItselfAndTheRunGoesOn) {
  Frames(3);
  fs::remove(m_dir / "frames" / "frame_2.rim.json");
  const struct {
    const char* steps;
    const char* error;  // of images 1 and 3; image 2 lacks its rim file
  } cases[] = {
      {R"({"name": "divide", "instr": "Divide", "inputs": [1, 0], "outputs": ["q"]})",
       R"(step 1 "divide" (Divide): failed with status 3; Numeric: Divide: Division by zero)"},
      {R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [{"var": "rim"}]})",
       "step 1 (Add): input 'number': variable 'rim' holds a point array"},
      {R"({"instr": "Remainder", "inputs": [7, 0]})",
       "step 1 (Remainder): exception: integer division by zero"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.steps);
    const fs::path program = Write(
        R"({"images": "frames", "variables": {"rim": {"type": "point array", "file": "{stem}.rim.json"}},
            "steps": [)" + std::string(c.steps) + R"(, {"instr": "_Zet_Numeric_AddNumbers_", "inputs": [1, 2], "outputs": ["sum"]}],
            "results": ["sum"]})");
    std::string err;
    EXPECT_EQ(Run({"--out", (m_dir / "out").string(), program.string()}, &err), 1);
    EXPECT_NE(err.find(c.error), std::string::npos) << err;
    const std::vector<Json> lines = Lines(m_dir / "out" / "results.jsonl");
    ASSERT_EQ(lines.size(), 3u);
    for (const Json& r : lines) {
      EXPECT_EQ(r["ok"], false);
      EXPECT_EQ(r["results"]["sum"], nullptr);  // the step after the failure never ran
    }
    EXPECT_EQ(lines[0]["error"], c.error);
    EXPECT_NE(lines[1]["error"].get<std::string>().find("variable 'rim': cannot read"),
              std::string::npos);
    EXPECT_EQ(lines[2]["error"], c.error);
  }
}

// Mistakes that need no image stop the run before it starts, with exit status 2.
TEST_F(Program, ProgramErrorsStopBeforeAnyImage) {
  Frames(1);
  const struct {
    const char* program;
    const char* error;
  } cases[] = {
      {R"({"images": "frames", "steps": [{"instr": "NoSuch"}]})",
       "step 1: unknown instruction 'NoSuch'"},
      {R"({"images": "frames", "steps": [{"name": "n", "instr": "NumToString", "params": {"Digits": 3}}]})",
       R"(step 1 "n" (NumToString): unknown parameter 'Digits')"},
      {R"({"images": "frames", "steps": [{"instr": "Sin", "inputs": {"angel": 1}}]})",
       "step 1 (Sin): no input 'angel'"},
      {R"({"images": "frames", "steps": [{"instr": "Sin", "inputs": ["ninety"]}]})",
       "step 1 (Sin): input 0: expected a number"},
      {R"({"images": "frames", "steps": [{"instr": "Sin", "inputs": [{"var": "later"}]},
          {"instr": "Sin", "outputs": ["later"]}]})",
       "step 1 (Sin): input 0: variable 'later' has no value before this step"},
      {R"({"images": "frames", "steps": [{"instr": "Sin", "outputs": ["image"]}]})",
       "the image being inspected cannot be written"},
      {R"({"images": "frames", "results": ["nothing"]})", "results: no variable 'nothing'"},
      {R"({"images": "frames", "variables": {"v": {"value": 1}}})",
       "variable 'v': a \"value\" or \"file\" needs a \"type\""},
      {R"({"images": "frames", "step": []})", "program: unknown field \"step\""},
      {R"({"images": "nowhere"})", "no image file or folder"},
      {R"({"steps": []})", "no images to inspect"},
      {R"({"images": "frames", )", "parse error"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.program);
    std::string err;
    EXPECT_EQ(Run({"--out", (m_dir / "out").string(), Write(c.program).string()}, &err), 2);
    EXPECT_NE(err.find(c.error), std::string::npos) << err;
    EXPECT_FALSE(fs::exists(m_dir / "out" / "results.jsonl"));
  }
}

// Images on two threads give the same files as on one, in the images' order.
TEST_F(Program, TwoJobsGiveTheResultsOfOne) {
  Frames(6);
  const fs::path program = Write(kProgram);
  for (const char* jobs : {"1", "2"}) {
    std::string err;
    ASSERT_EQ(Run({"-q", "--jobs", jobs, "--out", (m_dir / jobs).string(), program.string()}, &err),
              0) << err;
  }
  EXPECT_EQ(ReadFile(m_dir / "2" / "results.jsonl"), ReadFile(m_dir / "1" / "results.jsonl"));
  EXPECT_EQ(Lines(m_dir / "2" / "results.jsonl").size(), 6u);
  for (int i = 1; i <= 6; ++i) {
    const std::string png = "frame_" + std::to_string(i) + ".png";
    EXPECT_EQ(ReadFile(m_dir / "2" / png), ReadFile(m_dir / "1" / png)) << png;
  }
}

// The bundled example over frames of polar_frame, which writes beside each frame the
// part it drew: the fitted circle lies between the part's semi-axes, its centre on the
// part's, the gross outliers are all rejected, and the points kept stay near the rim.
TEST_F(Program, ExampleMeasuresThePartsItIsGiven) {
  for (int seed = 0; seed < 4; ++seed) {
    const std::string frame = (m_dir / "frames" / ("part_" + std::to_string(seed))).string();
    ASSERT_EQ(zet::test::Run(ZET_TEST_POLAR_FRAME, {frame + ".pgm", "640", "480",
                                                    std::to_string(seed)}).first, 0);
  }
  // The example as it ships, asked for the rejected points too.
  Json program = Json::parse(ReadFile(fs::path(ZET_TEST_SOURCE_DIR) / "examples" / "rim_check.json"),
                             nullptr, true, /*ignore_comments=*/true);
  program["results"].push_back("outliers");
  const fs::path file = Write(program.dump());
  std::string err;
  ASSERT_EQ(Run({"-q", "--out", (m_dir / "out").string(), file.string(),
                 (m_dir / "frames").string()}, &err), 0) << err;
  const std::vector<Json> lines = Lines(m_dir / "out" / "results.jsonl");
  ASSERT_EQ(lines.size(), 4u);
  for (int seed = 0; seed < 4; ++seed) {
    SCOPED_TRACE(seed);
    const std::string stem = "part_" + std::to_string(seed);
    const Json truth = Json::parse(ReadFile(m_dir / "frames" / (stem + ".part.json")));
    const Json rim = Json::parse(ReadFile(m_dir / "frames" / (stem + ".rim.json")));
    const Json& r = lines[seed]["results"];
    ASSERT_EQ(lines[seed]["ok"], true) << lines[seed].dump();
    const double rx = truth["rx"], ry = truth["ry"];
    EXPECT_NEAR(r["centre"]["x"].get<double>(), truth["cx"].get<double>(), 0.5);
    EXPECT_NEAR(r["centre"]["y"].get<double>(), truth["cy"].get<double>(), 0.5);
    EXPECT_GT(r["diameter"].get<double>(), 2 * ry - 0.5);
    EXPECT_LT(r["diameter"].get<double>(), 2 * rx + 0.5);
    // A gross outlier is at least 8 % of the radius off the rim: none was kept.
    EXPECT_GT(r["min diameter"].get<double>(), 2 * ry - 3.0);
    EXPECT_LT(r["max diameter"].get<double>(), 2 * rx + 3.0);
    for (int k : truth["outliers"]) {
      SCOPED_TRACE(k);
      const Json& p = rim[k];
      EXPECT_TRUE(std::any_of(r["outliers"].begin(), r["outliers"].end(), [&](const Json& q) {
        return std::abs(q["x"].get<double>() - p["x"].get<double>()) < 1e-9 &&
               std::abs(q["y"].get<double>() - p["y"].get<double>()) < 1e-9;
      }));
    }
    EXPECT_EQ(fs::exists(m_dir / "out" / (stem + ".png")), ZET_HOST_HAS_OVERLAYS != 0);
  }
}

}  // namespace
}  // namespace zet::test
