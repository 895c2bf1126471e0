// Date and time pictures on a fixed time: the codes, quoting, and names from the
// thread's locale (English in the C locale; German and Polish from locales built for
// the test with localedef, where the machine has the locale sources).
#include <locale.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>

#include "TempDir.h"
#include "zet/ZetOs.h"

namespace zet::test {
namespace {

SZetLocalTime At(int year, int month, int day, int dayOfWeek, int hour, int minute, int second) {
  SZetLocalTime t;
  t.year = year;
  t.month = month;
  t.day = day;
  t.dayOfWeek = dayOfWeek;
  t.hour = hour;
  t.minute = minute;
  t.second = second;
  return t;
}

std::string Date(const char* picture, const SZetLocalTime& t) {
  CStdStr s;
  EXPECT_TRUE(CZetOs::FormatDate(picture, t, &s));
  return s;
}

std::string Time(const char* picture, const SZetLocalTime& t) {
  CStdStr s;
  EXPECT_TRUE(CZetOs::FormatTime(picture, t, &s));
  return s;
}

const SZetLocalTime kMonday = At(2026, 3, 2, 1, 14, 5, 9);

TEST(OsDatePicture, DateCodes) {
  const struct {
    const char* picture;
    const char* text;
  } cases[] = {
      {"dd/MM/yy", "02/03/26"},
      {"d/M/y", "2/3/26"},
      {"ddd dddd ddddd", "Mon Monday Monday"},
      {"MMM MMMM MMMMMM", "Mar March March"},
      {"yyyy yyy yyyyy", "2026 2026 2026"},
      {"gg g", "A.D. A.D."},
      {"'day' d", "day 2"},
      {"'it''s' d", "it's 2"},
      {"''", ""},
      {"'open d", "open d"},
      {"hh:mm:ss tt D Y", "hh:mm:ss tt D Y"},
      {"", ""},
      {"\xE9-d-\x92", "\xE9-2-\x92"},
  };
  for (const auto& c : cases) EXPECT_EQ(Date(c.picture, kMonday), c.text) << c.picture;
  EXPECT_EQ(Date("y yy", At(2009, 1, 1, 4, 0, 0, 0)), "9 09");
}

// Quoting as Windows quotes: a quote opens literal text, two quotes inside it
// are one quote, the next single quote closes it; a pair outside literal text
// is an empty literal. The fourth and fifth are the Windows conformance test's
// own pictures.
TEST(OsDatePicture, QuotingAsWindows) {
  const SZetLocalTime saturday = At(2002, 5, 4, 6, 0, 0, 0);
  const struct {
    const char* picture;
    const char* text;
  } cases[] = {
      {"''", ""},
      {"''d''", "4"},
      {"'it''s' d", "it's 4"},
      {"ddd',' MMM dd ''''yy", "Sat, May 04 '02"},
      {"MMMM ''''yy", "May '02"},
      {"''''", "'"},
      {"'a''''b'", "a''b"},
  };
  for (const auto& c : cases) EXPECT_EQ(Date(c.picture, saturday), c.text) << c.picture;
  EXPECT_EQ(Time("''h'' 'o''clock'", At(2002, 5, 4, 6, 9, 0, 0)), "9 o'clock");
}

TEST(OsDatePicture, TimeCodes) {
  const struct {
    const char* picture;
    int hour;
    const char* text;
  } cases[] = {
      {"HH:mm:ss", 14, "14:05:09"}, {"H h m s", 14, "14 2 5 9"}, {"hh hhh tt t", 14, "02 02 PM P"},
      {"h tt", 0, "12 AM"},         {"h tt", 12, "12 PM"},       {"HH", 0, "00"},
      {"'h' h", 9, "h 9"},          {"d M y g", 9, "d M y g"},
  };
  for (const auto& c : cases) {
    SZetLocalTime t = kMonday;
    t.hour = c.hour;
    EXPECT_EQ(Time(c.picture, t), c.text) << c.picture << " at " << c.hour;
  }
}

// The leak checker's switches, present only in sanitized builds.
extern "C" void __lsan_disable() __attribute__((weak));
extern "C" void __lsan_enable() __attribute__((weak));

// Locales compiled from the system's sources into a folder of the test (LOCPATH) when
// a test needs them, so that nothing is installed on the machine.
class OsDateLocale : public testing::Test {
 protected:
  void TearDown() override { unsetenv("LOCPATH"); }
  // Runs `body` with the thread's locale set to `name` (such as "de_DE"), or skips.
  template <class F>
  void InLocale(const char* name, F body) {
    const std::string full = std::string(name) + ".UTF-8";
    const std::string cmd = "localedef -i " + std::string(name) + " -f UTF-8 '" + (m_dir / full) +
                            "' >/dev/null 2>&1";
    // localedef exits with 1 both for warnings and for missing sources: the built
    // category is the proof.
    const int rc = std::system(cmd.c_str());
    if (!WIFEXITED(rc) || !std::filesystem::exists(std::filesystem::path(m_dir / full) / "LC_TIME"))
      GTEST_SKIP() << "localedef or the locale sources (package locales) missing";
    setenv("LOCPATH", m_dir.Path().c_str(), 1);
    // glibc keeps the LOCPATH list it builds here for the process: not a leak of ours.
    if (&__lsan_disable) __lsan_disable();
    locale_t loc = newlocale(LC_ALL_MASK, full.c_str(), nullptr);
    if (&__lsan_enable) __lsan_enable();
    ASSERT_NE(loc, nullptr) << full;
    const locale_t before = uselocale(loc);
    body();
    uselocale(before);
    freelocale(loc);
  }
  CTempDir m_dir;
};

TEST_F(OsDateLocale, GermanNamesInWindows1252) {
  InLocale("de_DE", [] {
    EXPECT_EQ(Date("dddd, d. MMMM yyyy", kMonday), "Montag, 2. M\xE4rz 2026");
    EXPECT_EQ(Date("ddd MMM", kMonday), "Mo M\xE4r");
    EXPECT_EQ(Time("HH:mm tt", kMonday), "14:05 ");  // no AM/PM markers in German
  });
}

TEST_F(OsDateLocale, PolishMonthsTakeTheGenitiveWithADay) {
  const SZetLocalTime october = At(2026, 10, 5, 1, 8, 0, 0);
  InLocale("pl_PL", [&] {
    EXPECT_EQ(Date("MMMM", kMonday), "marzec");
    EXPECT_EQ(Date("d MMMM", kMonday), "2 marca");
    EXPECT_EQ(Date("dddd MMMM", kMonday), "poniedzialek marzec");  // no day number

    EXPECT_EQ(Date("MMMM", october), "pazdziernik");
  });
}

}  // namespace
}  // namespace zet::test
