// The OS layer's differential table: the same cases through whichever implementation
// this program is built with (platform/os/posix on Linux, platform/os/win32 on
// Windows), written as one line per case, so that the Linux layer can be compared with
// the Windows calls it imitates (tests/osdiff/compare.py; scripts/wine-test.sh runs
// both sides):
//
//   osdiff OUT_FILE
//
// Lines: "date\tPICTURE\tDATE\tRESULT", "time\tPICTURE\tTIME\tRESULT" (RESULT is the
// text, or "<fails>"), "rand\tSEED\tCOUNT\tVALUES-DIGEST" plus every value in
// "randv" lines, and "file\tSITUATION\tSTATUS\tCODE".
//
// Cases where Wine itself departs from Windows (whose documentation and conformance
// tests decide) are left out here, each with its reason, so that the table compares
// the Linux layer with Windows and not with Wine's mistakes.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "zet/ZetOs.h"

namespace fs = std::filesystem;

namespace {

SZetLocalTime At(int y, int mo, int d, int dow, int h, int mi, int s) {
  SZetLocalTime t;
  t.year = y;
  t.month = mo;
  t.day = d;
  t.dayOfWeek = dow;
  t.hour = h;
  t.minute = mi;
  t.second = s;
  return t;
}

// Dates with their weekday (as GetLocalTime fills it): every month, every weekday,
// one- and two-digit days and months, years with fewer digits, century years.
const std::vector<SZetLocalTime> kDates = {
    At(2002, 5, 4, 6, 0, 0, 0),    At(2026, 11, 15, 0, 8, 5, 9),  At(1999, 12, 31, 5, 23, 59, 59),
    At(2000, 1, 1, 6, 0, 0, 1),    At(2024, 2, 29, 4, 12, 0, 0),  At(2006, 3, 7, 2, 1, 2, 3),
    At(2010, 4, 12, 1, 11, 59, 59), At(2013, 6, 20, 4, 12, 30, 5), At(2019, 7, 9, 2, 13, 45, 9),
    At(2021, 8, 22, 0, 18, 7, 42), At(2023, 9, 1, 5, 6, 6, 6),    At(2025, 10, 29, 3, 21, 0, 30),
    At(1601, 1, 1, 1, 0, 0, 0),
};

// Date pictures. Left out, Wine differing from Windows:
// - "g", "gg" and longer: Wine 8 gives the era as "AD" (and "ADAD" for "gggg"), Windows
//   (English) as "A.D." once for any run.
// - a lone "y" with a year whose last two digits are below 10 (2002, 2000, 1601): Wine
//   writes "02", Windows "2" (2009 with "y" is "9" there); see LoneYearOfOneDigit.
const std::vector<std::string> kDatePictures = {
    "d", "dd", "ddd", "dddd", "ddddd", "M", "MM", "MMM", "MMMM", "MMMMM", "y", "yy", "yyy",
    "yyyy", "yyyyy", "dd/MM/yy", "d/M/y", "yyyy-MM-dd", "dddd, MMMM dd, yyyy",
    "ddd dd MMM yyyy", "d MMMM", "MMMM d", "MMMM yyyy", "'day' d", "'dd' dd", "dd' 'MM",
    "''", "''d''", "'it''s' d", "ddd',' MMM dd ''''yy", "MMMM ''''yy", "'", "d'", "'x''y",
    "hh:mm", "x d z", "d.M.yyyy", "[dd]", "MMMd", "dMMMy",
};

const std::vector<SZetLocalTime> kTimes = {
    At(2002, 5, 4, 6, 0, 0, 0),    At(2002, 5, 4, 6, 1, 2, 3),    At(2002, 5, 4, 6, 9, 9, 9),
    At(2002, 5, 4, 6, 11, 59, 59), At(2002, 5, 4, 6, 12, 0, 0),   At(2002, 5, 4, 6, 12, 30, 5),
    At(2002, 5, 4, 6, 13, 45, 9),  At(2002, 5, 4, 6, 23, 59, 59), At(2002, 5, 4, 6, 0, 30, 0),
    At(2002, 5, 4, 6, 10, 10, 10),
};

const std::vector<std::string> kTimePictures = {
    "h", "hh", "hhh", "H", "HH", "HHH", "m", "mm", "mmm", "s", "ss", "sss", "t", "tt", "ttt",
    "HH:mm:ss", "h:mm:ss tt", "hh:mm tt", "H.mm", "'at' H", "hh 'o''clock' tt", "''", "''H''",
    "mm:ss", "d M y", "h t", "'", "HH'", "[HH]", "Hmmss",
};

std::string Stamp(const SZetLocalTime& t) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day, t.hour,
                t.minute, t.second);
  return buf;
}

// A picture with a lone "y" and a date whose year is one digit in that form.
bool LoneYearOfOneDigit(const std::string& p, const SZetLocalTime& t) {
  for (size_t i = 0; i < p.size(); ++i)
    if (p[i] == 'y' && (i == 0 || p[i - 1] != 'y') && (i + 1 == p.size() || p[i + 1] != 'y'))
      return t.year % 100 < 10;
  return false;
}

void Pictures(std::ostream& out) {
  for (const std::string& p : kDatePictures)
    for (const SZetLocalTime& t : kDates) {
      if (LoneYearOfOneDigit(p, t)) continue;
      CStdStr s;
      out << "date\t" << p << '\t' << Stamp(t) << '\t'
          << (CZetOs::FormatDate(p.c_str(), t, &s) ? std::string(s) : "<fails>") << '\n';
    }
  for (const std::string& p : kTimePictures)
    for (const SZetLocalTime& t : kTimes) {
      CStdStr s;
      out << "time\t" << p << '\t' << Stamp(t) << '\t'
          << (CZetOs::FormatTime(p.c_str(), t, &s) ? std::string(s) : "<fails>") << '\n';
    }
}

// 10^6 values: 200000 after each of five seeds (1 is the runtime's initial state).
void Random(std::ostream& out) {
  for (unsigned seed : {1u, 5u, 12345u, 32767u, 4294967295u}) {
    CZetOs::Srand(seed);
    uint64_t digest = 1469598103934665603ull;
    std::string values;
    for (int i = 0; i < 200000; ++i) {
      const int v = CZetOs::Rand();
      digest = (digest ^ static_cast<uint64_t>(v)) * 1099511628211ull;
      values += std::to_string(v);
      values += (i % 20 == 19) ? '\n' : ' ';
    }
    out << "rand\t" << seed << "\t200000\t" << digest << '\n';
    out << "randv\t" << seed << '\n' << values;
  }
}

void Touch(const fs::path& p, const std::string& text = "x") {
  std::ofstream(p, std::ios::binary) << text;
}

// The files and folders situations, each in a fresh folder below `base`.
void Files(std::ostream& out, const fs::path& base) {
  std::error_code ec;
  fs::remove_all(base, ec);
  fs::create_directories(base);
  const auto row = [&out](const char* what, bool ok) {
    out << "file\t" << what << '\t' << (ok ? 1 : 0) << '\t' << (ok ? 0 : CZetOsError::GetLastError())
        << '\n';
  };
  const auto check = [&out](const char* what, bool ok) {
    out << "file\t" << what << '\t' << (ok ? 1 : 0) << "\t-\n";  // sets no error code
  };
  const auto code = [&out](const char* what, int c) { out << "file\t" << what << "\t-\t" << c << '\n'; };
  const auto s = [](const fs::path& p) { return p.string(); };

  const fs::path dir = base / "d";
  fs::create_directories(dir);
  Touch(base / "file.txt", "source");
  Touch(base / "other.txt", "other");

  row("delete a missing file", CZetOs::FileDelete(s(base / "missing.txt").c_str()));
  row("delete in a missing folder", CZetOs::FileDelete(s(base / "nodir" / "x.txt").c_str()));
  row("delete a folder as a file", CZetOs::FileDelete(s(dir).c_str()));
  check("file exists: a file", CZetOs::FileExists(s(base / "file.txt").c_str()));
  check("file exists: a folder", CZetOs::FileExists(s(dir).c_str()));
  code("create a new folder with its parents", CZetOs::CreateFolder(s(base / "n1" / "n2").c_str()));
  code("create an existing folder", CZetOs::CreateFolder(s(dir).c_str()));
  // Left out: a folder created over an existing file. The Linux layer answers
  // ERROR_FILE_EXISTS (80), as Wine's own documentation of SHCreateDirectoryExA has it
  // ("a file with that name exists"); Wine's implementation passes on CreateDirectory's
  // ERROR_ALREADY_EXISTS (183). Windows' documentation lists both codes as "The directory
  // exists.", which is what FolderCreate says for either.
  code("create a relative path", CZetOs::CreateFolder("zet-relative-folder"));
  code("create below a file", CZetOs::CreateFolder(s(base / "file.txt" / "sub").c_str()));
  // Left out: a 260-character path (beyond MAX_PATH). Windows' ANSI calls refuse it
  // (ERROR_FILENAME_EXCED_RANGE, 206, as the Linux layer answers); Wine applies no such
  // limit and creates the folder, or looks the file up.
  row("copy onto an existing file, failIfExists",
      CZetOs::FileCopy(s(base / "file.txt").c_str(), s(base / "other.txt").c_str(), true));
  row("copy onto an existing file", CZetOs::FileCopy(s(base / "file.txt").c_str(),
                                                     s(base / "other.txt").c_str(), false));
  row("copy a missing source", CZetOs::FileCopy(s(base / "missing.txt").c_str(),
                                                s(base / "c.txt").c_str(), false));
  row("copy into a missing folder", CZetOs::FileCopy(s(base / "file.txt").c_str(),
                                                     s(base / "nodir" / "c.txt").c_str(), false));
  row("copy a folder", CZetOs::FileCopy(s(dir).c_str(), s(base / "c2").c_str(), false));
  row("move across folders", CZetOs::FileMove(s(base / "other.txt").c_str(), s(dir / "moved.txt").c_str()));
  check("moved file arrived", CZetOs::FileExists(s(dir / "moved.txt").c_str()));
  row("move onto an existing file", CZetOs::FileMove(s(base / "file.txt").c_str(), s(dir / "moved.txt").c_str()));
  row("move a missing source", CZetOs::FileMove(s(base / "missing.txt").c_str(), s(base / "m.txt").c_str()));
  Touch(dir / "inner.txt");
  fs::create_directories(dir / "sub" / "deeper");
  Touch(dir / "sub" / "deeper" / "f.txt");
  row("delete a non-empty folder", CZetOs::DeleteTree(s(dir).c_str()));
  check("deleted folder is gone", !fs::exists(dir, ec));
  row("delete a missing folder", CZetOs::DeleteTree(s(base / "nodir").c_str()));
  uint64_t a = 0, b = 0, c = 0;
  check("disk space of the folder", CZetOs::GetDiskSpace(s(base).c_str(), &a, &b, &c) && b > 0 && a <= b);
  fs::remove_all(base, ec);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: osdiff OUT_FILE\n");
    return 2;
  }
  std::ofstream out(argv[1], std::ios::binary);
  Pictures(out);
  Random(out);
  Files(out, fs::temp_directory_path() / "zet-osdiff");
  return out.good() ? 0 : 1;
}
