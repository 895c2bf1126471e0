// zet against hostile requests, files and programs: each must be answered (or
// refused) without ending the session, blocking, or costing memory out of proportion,
// and a run never writes over its own inputs.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "TempDir.h"
#include "ZetShell.h"
#include "zet/ZetHost.h"

namespace zet::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  for (size_t start = 0, end; start < text.size(); start = end + 1) {
    end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
  }
  return lines;
}

// zet exec over `requests` in `dir`, under `limit` (a prlimit option, or ""): the exit
// code and the answers.
std::pair<int, std::vector<std::string>> Exec(const CTempDir& dir, const std::string& requests,
                                              const std::string& limit = "") {
  WriteFile(dir.Path() / "requests.jsonl", requests);
  const std::string prefix = limit.empty() ? "" : "prlimit " + limit + " ";
  const auto [rc, out] = Shell("cd '" + dir.Path().string() + "' && timeout 120 " + prefix +
                               Zet("exec requests.jsonl"));
  return {rc, Lines(out)};
}

constexpr const char* kAdd = R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [1, 2]})";
constexpr const char* kAddAnswer =
    R"({"status":0,"outputs":[3.0],"reports":[],"events":[],"annotations":[]})";

std::string Nest(int depth, const std::string& inner = "1") {
  return std::string(static_cast<size_t>(depth), '[') + inner + std::string(static_cast<size_t>(depth), ']');
}

// A value nested 100 000 deep in every place a request holds one; each is refused
// with the depth and the session answers the next request.
TEST(Hostile, NestingBombsAreRefusedAndTheSessionGoesOn) {
  CTempDir dir;
  const std::string bomb = Nest(100000);
  const std::string requests[] = {
      R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [)" + bomb + "]}",
      R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [1, 2], "outputs": [)" + bomb + "]}",
      R"({"instr": "NumToString", "params": {"Number of digits": )" + bomb + "}}",
      R"({"instr": "_Zet_Numeric_AddNumbers_", "instance": )" + bomb + "}",
      R"({"instr": "_Zet_Numeric_AddNumbers_", "settings": {"angle_unit": )" + bomb + "}}",
      R"({"instr": "ProcessPolarizedImage", "inputs": [{"file": )" + bomb + "}]}",
      R"({"instr": "PtToLnDist", "inputs": [{"x": )" + bomb + R"(, "y": 0}]})",
      Nest(129, "{}"),
  };
  std::string all;
  for (const std::string& r : requests) all += r + "\n" + kAdd + "\n";
  const auto [rc, answers] = Exec(dir, all);
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(answers.size(), 2 * std::size(requests));
  for (size_t i = 0; i < answers.size(); i += 2) {
    SCOPED_TRACE(i / 2);
    EXPECT_NE(answers[i].find("\"error\":\"bad JSON: nested deeper than 128 levels at line 1, column "),
              std::string::npos)
        << answers[i].substr(0, 200);
    EXPECT_EQ(answers[i + 1], kAddAnswer);
  }
  // 128 levels are still read.
  const auto [okRc, ok] = Exec(dir, R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [1], "x": )" + Nest(127) + "}\n");
  EXPECT_EQ(okRc, 0);
  ASSERT_EQ(ok.size(), 1u);
  EXPECT_EQ(ok[0].find("nested"), std::string::npos) << ok[0];
}

// An error text quotes at most a short excerpt of the offending value.
TEST(Hostile, ErrorTextsQuoteShortExcerpts) {
  CTempDir dir;
  const std::string longText(100000, 'x');
  const auto [rc, answers] =
      Exec(dir, R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [")" + longText + R"("]})" "\n" +
                    R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [)" + Nest(100, "\"" + longText + "\"") + "]}\n");
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(answers.size(), 2u);
  for (const std::string& a : answers) {
    EXPECT_LT(a.size(), 200u) << a.substr(0, 300);
    EXPECT_NE(a.find("input 0: expected a number, got "), std::string::npos) << a.substr(0, 300);
    EXPECT_NE(a.find("...\"}"), std::string::npos) << a.substr(0, 300);
  }
}

// A FIFO (or anything but a regular file) is refused before it is opened for
// reading, so nobody waits for a writer that never comes.
TEST(Hostile, FifosAreRefusedWithoutBlocking) {
  CTempDir dir;
  ASSERT_EQ(mkfifo((dir / "f").c_str(), 0600), 0);
  const auto [rc, answers] = Exec(
      dir, std::string(R"({"instr": "ProcessPolarizedImage", "inputs": [{"file": "f"}]})") + "\n" +
               kAdd + "\n");
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(answers.size(), 2u);
  EXPECT_NE(answers[0].find("not a regular file"), std::string::npos) << answers[0];
  EXPECT_EQ(answers[1], kAddAnswer);

  WriteFile(dir.Path() / "program.json",
            R"({"steps": [{"instr": "ProcessPolarizedImage", "inputs": [{"var": "image"}]}]})");
  const auto [runRc, out] = Shell("cd '" + dir.Path().string() + "' && timeout 60 " +
                                  Zet("run program.json f --out o 2>&1"));
  EXPECT_EQ(runRc, 1) << out;
  EXPECT_NE(out.find("not a regular file"), std::string::npos) << out;
  const auto [progRc, progOut] = Shell("cd '" + dir.Path().string() + "' && timeout 60 " +
                                       Zet("run f --out o 2>&1"));
  EXPECT_EQ(progRc, 2) << progOut;
}

// Big answers stream: under an address-space limit far below what the answer once
// took as a tree, the answer comes whole; a request that cannot fit is that request's
// error and the session goes on.
TEST(Hostile, BigAnswersFitUnderAnAddressSpaceLimit) {
  if (kSanitized) GTEST_SKIP() << "the sanitizer reserves more address space than the limit";
  CTempDir dir;
  const std::string rep = R"({"instr": "_Zet_Array_CPArrCreateRep_", "inputs": [)";
  const std::string big = rep + R"(4000000, {"x": 1, "y": 2}]})";
  const std::string huge = rep + R"(60000000, {"x": 1, "y": 2}]})";
  // 1 GiB, where these 4 000 000 points took about 2 GB while answers were trees.
  const auto [rc, answers] = Exec(dir, big + "\n" + huge + "\n" + kAdd + "\n", "--as=1073741824");
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(answers.size(), 3u);
  const std::string head = R"({"status":0,"outputs":[[{"x":1.0,"y":2.0},{"x":1.0,"y":2.0},)";
  EXPECT_EQ(answers[0].substr(0, head.size()), head);
  EXPECT_EQ(answers[0].size(), 18u * 4000000 + 68);  // 17 bytes a point, commas, the frame
  EXPECT_EQ(answers[1].substr(0, 80).find("{\"status\":0"), std::string::npos) << answers[1].substr(0, 200);
  EXPECT_EQ(answers[2], kAddAnswer);
}

// A million points in one request (about 30 MB of text) are read straight into the
// input's values: the session fits 256 MiB of address space, where a JSON tree of
// the points alone once took about 230 MB more than the text. A point that does not
// fit is found the same way, without a tree either.
TEST(Hostile, AMillionPointsAreReadWithoutATree) {
  if (kSanitized) GTEST_SKIP() << "the sanitizer reserves more address space than the limit";
  CTempDir dir;
  std::string request = R"({"instr": "_Zet_Geometric_Pt2BestLn_", "inputs": [0, [)";
  uint32_t noise = 1;
  char point[64];
  for (int i = 0; i < 1000000; ++i) {
    noise = noise * 1664525u + 1013904223u;  // a few digits of scatter about y = 2x
    const double x = i * 0.001;
    std::snprintf(point, sizeof point, "%s{\"x\":%.10g,\"y\":%.10g}", i ? "," : "", x,
                  2 * x + (noise >> 8) * 1e-7 - 0.8);
    request += point;
  }
  // The same points with one that is not a point at the end: an error, at the same cost.
  const std::string spoilt = request + R"(,{"x":1}]]})" + "\n";
  request += "]]}\n";
  const auto [rc, answers] = Exec(dir, request + spoilt + kAdd + "\n", "--as=268435456");
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(answers.size(), 3u);
  EXPECT_EQ(answers[1], R"({"error":"input 1: missing \"y\" in {\"x\":1}"})");
  // All points were used; the line's angle is about atan(2).
  const std::string& a = answers[0];
  const std::string head = R"({"status":0,"outputs":[1000000.0,{"a":)";
  ASSERT_EQ(a.substr(0, head.size()), head) << a.substr(0, 200);
  EXPECT_NEAR(std::tan(std::strtod(a.c_str() + head.size(), nullptr)), 2.0, 1e-4);
  size_t points = 0;
  for (size_t at = a.find("{\"x\":"); at != std::string::npos; at = a.find("{\"x\":", at + 1)) ++points;
  EXPECT_EQ(points, 1000000u);
  EXPECT_EQ(answers[2], kAddAnswer);
}

// Many copies of a long text: the cap counts the texts' bytes, so the request fails
// at once instead of asking for gigabytes.
TEST(Hostile, StringArrayCapCountsTheTexts) {
  CTempDir dir;
  const std::string text(5000, 'x');
  const auto [rc, answers] =
      Exec(dir, R"({"instr": "_Zet_Array_CSArrCreateRep_", "inputs": [2000000, ")" + text + "\"]}\n",
           kSanitized ? "" : "--as=1073741824");
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(answers.size(), 1u);
  EXPECT_EQ(answers[0], R"({"status":3,"outputs":[null],"reports":[],"events":[],"annotations":[]})");
}

// FolderDelete of DIR/sub/.. is refused with the instruction's report; DIR survives.
TEST(Hostile, FolderDeleteOfDotDotDeletesNothing) {
  CTempDir dir;
  fs::create_directories(dir.Path() / "DIR/sub");
  WriteFile(dir.Path() / "DIR/keep", "k");
  const std::string path = dir / "DIR/sub/..";
  const auto [rc, answers] =
      Exec(dir, R"({"instr": "FolderDelete ", "inputs": [")" + path + "\"]}\n");
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(answers.size(), 1u);
  const Json a = Json::parse(answers[0]);
  EXPECT_EQ(a["outputs"][0], false);
  EXPECT_EQ(a["reports"][0]["text"], "Failed to delete folder \"" + path + "\"");
  EXPECT_EQ(ReadFile(dir.Path() / "DIR/keep"), "k");
}

// Non-ASCII names reach the disk as UTF-8, from a request (UTF-8) through the
// library (Windows-1252) and the OS layer.
TEST(Hostile, NonAsciiNamesRoundTrip) {
  CTempDir dir;
  WriteFile(dir.Path() / "caf\xC3\xA9.txt", "coffee");
  const std::string folder = dir / "Gr\xC3\xB6\xC3\x9F" "e \xE2\x82\xAC";
  const std::string cafe = dir / "caf\xC3\xA9.txt";
  const auto [rc, answers] = Exec(
      dir, R"({"instr": "FolderCreate ", "inputs": [")" + folder + "\"]}\n" +
               R"({"instr": "FileExists", "inputs": [")" + cafe + "\"]}\n" +
               R"({"instr": "FileDelete ", "inputs": [")" + cafe + "\"]}\n");
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(answers.size(), 3u);
  for (const std::string& a : answers) EXPECT_NE(a.find("\"outputs\":[true]"), std::string::npos) << a;
  EXPECT_TRUE(fs::is_directory(folder));
  EXPECT_FALSE(fs::exists(cafe));
}

// Images for the run tests: a.pgm, a.png and a-2.pgm once gave two a-2.png overlays.
class HostileRun : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(dir.Path() / "img");
    fs::create_directories(dir.Path() / "one");
    CZetImage img;
    ASSERT_EQ(img.Create(8, 6, kZetImageMono8), kZetImageOk);
    for (const char* name : {"img/a.pgm", "img/a.png", "img/a-2.pgm", "one/b.png"})
      ASSERT_EQ(host::SaveImageFile((dir.Path() / name).string(), img), "");
    WriteFile(dir.Path() / "program.json",
              R"({"steps": [{"instr": "_CAnnotPoint_", "inputs": [{"x": 1, "y": 1}]}]})");
  }
  int Run(const std::string& args, std::string* out) {
    const auto [rc, text] = Shell("cd '" + dir.Path().string() + "' && " +
                                  Zet("run program.json " + args + " -q 2>&1"));
    *out = text;
    return rc;
  }
  CTempDir dir;
};

TEST_F(HostileRun, OverlayNamesAreUniqueWithinARun) {
  std::string out;
  ASSERT_EQ(Run("img --out o", &out), 0) << out;
  int overlays = 0;
  for (const auto& e : fs::directory_iterator(dir.Path() / "o")) overlays += e.path().extension() == ".png";
  EXPECT_EQ(overlays, 3);
  std::vector<std::string> names;
  for (const std::string& line : Lines(ReadFile(dir.Path() / "o/results.jsonl")))
    if (!line.empty()) names.push_back(Json::parse(line)["overlay"]);
  ASSERT_EQ(names.size(), 3u);
  EXPECT_NE(names[0], names[1]);
  EXPECT_NE(names[0], names[2]);
  EXPECT_NE(names[1], names[2]);
}

// --out naming the image's own folder would write b.png over the input b.png: the
// run is refused (exit 2) before anything is written, and the input is unchanged.
TEST_F(HostileRun, TheRunNeverWritesOverItsInputs) {
  const std::string before = ReadFile(dir.Path() / "one/b.png");
  std::string out;
  EXPECT_EQ(Run("one --out one", &out), 2) << out;
  EXPECT_NE(out.find("would write over the input"), std::string::npos) << out;
  EXPECT_EQ(ReadFile(dir.Path() / "one/b.png"), before);
  EXPECT_FALSE(fs::exists(dir.Path() / "one/results.jsonl"));
  // The same through another spelling of the folder.
  EXPECT_EQ(Run("one --out ./one/../one", &out), 2) << out;
  // Without overlays nothing of the run's own lands on an input.
  EXPECT_EQ(Run("one --out one --no-overlays", &out), 0) << out;
  EXPECT_EQ(ReadFile(dir.Path() / "one/b.png"), before);
}

TEST(Hostile, APlugInThatCannotLoadIsAUsageError) {
  CTempDir dir;
  WriteFile(dir.Path() / "program.json", R"({"steps": []})");
  const std::vector<std::string> commands = {"list", "exec",
                                             "run '" + (dir / "program.json") + "' /dev/null"};
  for (const std::string& args : commands) {
    SCOPED_TRACE(args);
    const auto [rc, out] = Shell(std::string(ZET_TEST_ZET) + " --plugin /nonexistent " + args +
                                 " </dev/null 2>&1");
    EXPECT_EQ(rc, 2) << out;
  }
}

}  // namespace
}  // namespace zet::test
