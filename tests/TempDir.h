// A fresh folder under the test temporary folder, removed with everything in it at
// the end of the test.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#if defined(_WIN32)
#include <windows.h>
#endif

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace zet::test {

class CTempDir {
 public:
  explicit CTempDir(const std::filesystem::path& parent = testing::TempDir()) {
#if defined(_WIN32)
    // No mkdtemp in the Windows C runtime: a new folder under a name not yet taken.
    for (unsigned i = 0; i < 1000 && m_path.empty(); ++i) {
      const std::filesystem::path p =
          parent / ("zet-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(i));
      std::error_code ec;
      if (std::filesystem::create_directory(p, ec)) m_path = p;
    }
#else
    std::string name = (parent / "zet-XXXXXX").string();
    if (mkdtemp(name.data())) m_path = name;
#endif
    EXPECT_FALSE(m_path.empty()) << "cannot create a folder in " << parent;
  }
  ~CTempDir() {
    std::error_code ec;
    if (!m_path.empty()) std::filesystem::remove_all(m_path, ec);
  }
  CTempDir(const CTempDir&) = delete;
  CTempDir& operator=(const CTempDir&) = delete;

  const std::filesystem::path& Path() const { return m_path; }
  // The path of `name` inside, as text.
  std::string operator/(const std::string& name) const { return (m_path / name).string(); }

 private:
  std::filesystem::path m_path;
};

inline void WriteFile(const std::filesystem::path& p, const std::string& text) {
  std::ofstream(p, std::ios::binary) << text;
}

inline std::string ReadFile(const std::filesystem::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace zet::test
