// The keyboard state from X11: XQueryKeymap read through a virtual-key table, with
// libX11 loaded at run time.
//
// Each query opens its own connection to the display named by DISPLAY and closes it:
// an X server that goes away between queries is then just "no display" (Xlib ends a
// process whose open connection breaks). A pressed key is read through its keysyms,
// lowest shift level first, so a key is named by what it types unshifted (AZERTY's
// "1" key, whose first level is '&', is still the virtual key '1'); keypad digits read
// as VK_NUMPAD0..9 whatever the NumLock state. Keys without a Windows virtual key
// (national letters such as 'ü') are never down, nor are the extra mouse buttons
// (codes 5 and 6), which the X11 core protocol does not report.
#include <X11/XF86keysym.h>
#include <X11/keysym.h>

#include <cstring>
#include <mutex>
#include <string>

#include "os/posix/DynLib.h"
#include "os/posix/Posix.h"
#include "zet/ZetOs.h"

namespace {

using Display = struct _XDisplay;
using KeySym = unsigned long;

struct SX11 {
  zet::os::CDynLib lib{"libX11.so.6", "libX11.so"};
  Display* (*OpenDisplay)(const char*) = nullptr;
  int (*CloseDisplay)(Display*) = nullptr;
  int (*QueryKeymap)(Display*, char[32]) = nullptr;
  int (*DisplayKeycodes)(Display*, int*, int*) = nullptr;
  KeySym* (*GetKeyboardMapping)(Display*, unsigned char, int, int*) = nullptr;
  int (*Free)(void*) = nullptr;
  bool ok = false;

  SX11() {
    ok = lib.Get("XOpenDisplay", &OpenDisplay) && lib.Get("XCloseDisplay", &CloseDisplay) &&
         lib.Get("XQueryKeymap", &QueryKeymap) && lib.Get("XDisplayKeycodes", &DisplayKeycodes) &&
         lib.Get("XGetKeyboardMapping", &GetKeyboardMapping) && lib.Get("XFree", &Free);
  }
};

const SX11& X11() {
  static const SX11* x = new SX11;  // kept for the process: libX11 stays loaded
  return *x;
}

// One connection for one query.
class CDisplay {
 public:
  CDisplay() {
    const std::string name = zet::os::GetEnvString("DISPLAY");
    if (!name.empty() && X11().ok) m_dpy = X11().OpenDisplay(name.c_str());
  }
  ~CDisplay() {
    if (m_dpy) X11().CloseDisplay(m_dpy);
  }
  CDisplay(const CDisplay&) = delete;
  CDisplay& operator=(const CDisplay&) = delete;
  Display* Get() const { return m_dpy; }

 private:
  Display* m_dpy = nullptr;
};

// Keysym -> virtual keys (a generic key and its left or right one). Letters, digits,
// keypad digits and function keys are ranges, handled in VirtualKeys.
struct SKeyRow {
  KeySym sym;
  unsigned char vk[2];
};
constexpr SKeyRow kKeys[] = {
    {XK_Break, {0x03}},        {XK_BackSpace, {0x08}},      {XK_Tab, {0x09}},
    {XK_ISO_Left_Tab, {0x09}}, {XK_Clear, {0x0C}},          {XK_KP_Begin, {0x0C}},
    {XK_Return, {0x0D}},       {XK_KP_Enter, {0x0D}},       {XK_Shift_L, {0x10, 0xA0}},
    {XK_Shift_R, {0x10, 0xA1}}, {XK_Control_L, {0x11, 0xA2}}, {XK_Control_R, {0x11, 0xA3}},
    {XK_Alt_L, {0x12, 0xA4}},  {XK_Meta_L, {0x12, 0xA4}},   {XK_Alt_R, {0x12, 0xA5}},
    {XK_Meta_R, {0x12, 0xA5}}, {XK_ISO_Level3_Shift, {0x12, 0xA5}},
    {XK_Pause, {0x13}},        {XK_Caps_Lock, {0x14}},      {XK_Kana_Lock, {0x15}},
    {XK_Hangul, {0x15}},       {XK_Kanji, {0x19}},          {XK_Hangul_Hanja, {0x19}},
    {XK_Escape, {0x1B}},       {XK_Henkan_Mode, {0x1C}},    {XK_Muhenkan, {0x1D}},
    {XK_space, {0x20}},        {XK_KP_Space, {0x20}},       {XK_Prior, {0x21}},
    {XK_KP_Prior, {0x21}},     {XK_Next, {0x22}},           {XK_KP_Next, {0x22}},
    {XK_End, {0x23}},          {XK_KP_End, {0x23}},         {XK_Home, {0x24}},
    {XK_KP_Home, {0x24}},      {XK_Left, {0x25}},           {XK_KP_Left, {0x25}},
    {XK_Up, {0x26}},           {XK_KP_Up, {0x26}},          {XK_Right, {0x27}},
    {XK_KP_Right, {0x27}},     {XK_Down, {0x28}},           {XK_KP_Down, {0x28}},
    {XK_Select, {0x29}},       {XK_Execute, {0x2B}},        {XK_Print, {0x2C}},
    {XK_Insert, {0x2D}},       {XK_KP_Insert, {0x2D}},      {XK_Delete, {0x2E}},
    {XK_KP_Delete, {0x2E}},    {XK_Help, {0x2F}},           {XK_Super_L, {0x5B}},
    {XK_Super_R, {0x5C}},      {XK_Menu, {0x5D}},           {XF86XK_Sleep, {0x5F}},
    {XK_KP_Multiply, {0x6A}},  {XK_KP_Add, {0x6B}},         {XK_KP_Separator, {0x6C}},
    {XK_KP_Subtract, {0x6D}},  {XK_KP_Decimal, {0x6E}},     {XK_KP_Divide, {0x6F}},
    {XK_Num_Lock, {0x90}},     {XK_Scroll_Lock, {0x91}},    {XF86XK_Back, {0xA6}},
    {XF86XK_Forward, {0xA7}},  {XF86XK_Refresh, {0xA8}},    {XF86XK_Stop, {0xA9}},
    {XF86XK_Search, {0xAA}},   {XF86XK_Favorites, {0xAB}},  {XF86XK_HomePage, {0xAC}},
    {XF86XK_AudioMute, {0xAD}}, {XF86XK_AudioLowerVolume, {0xAE}},
    {XF86XK_AudioRaiseVolume, {0xAF}}, {XF86XK_AudioNext, {0xB0}},
    {XF86XK_AudioPrev, {0xB1}}, {XF86XK_AudioStop, {0xB2}},   {XF86XK_AudioPlay, {0xB3}},
    {XF86XK_AudioPause, {0xB3}}, {XF86XK_Mail, {0xB4}},       {XF86XK_AudioMedia, {0xB5}},
    {XF86XK_MyComputer, {0xB6}}, {XF86XK_Calculator, {0xB7}},
    // The punctuation keys (VK_OEM_*) as the US layout has them.
    {XK_semicolon, {0xBA}},    {XK_colon, {0xBA}},          {XK_equal, {0xBB}},
    {XK_plus, {0xBB}},         {XK_comma, {0xBC}},          {XK_minus, {0xBD}},
    {XK_underscore, {0xBD}},   {XK_period, {0xBE}},         {XK_slash, {0xBF}},
    {XK_question, {0xBF}},     {XK_grave, {0xC0}},          {XK_asciitilde, {0xC0}},
    {XK_dead_grave, {0xC0}},   {XK_bracketleft, {0xDB}},    {XK_braceleft, {0xDB}},
    {XK_backslash, {0xDC}},    {XK_bar, {0xDC}},            {XK_bracketright, {0xDD}},
    {XK_braceright, {0xDD}},   {XK_apostrophe, {0xDE}},     {XK_quotedbl, {0xDE}},
    {XK_less, {0xE2}},         {XK_greater, {0xE2}},
};

// The virtual keys of a keysym (0 to 2 of them); 0 in `vk` marks none.
void VirtualKeys(KeySym sym, unsigned char vk[2]) {
  vk[0] = vk[1] = 0;
  if (sym >= XK_a && sym <= XK_z) {
    vk[0] = static_cast<unsigned char>('A' + (sym - XK_a));
  } else if (sym >= XK_A && sym <= XK_Z) {
    vk[0] = static_cast<unsigned char>(sym);
  } else if (sym >= XK_0 && sym <= XK_9) {
    vk[0] = static_cast<unsigned char>(sym);
  } else if (sym >= XK_KP_0 && sym <= XK_KP_9) {
    vk[0] = static_cast<unsigned char>(0x60 + (sym - XK_KP_0));
  } else if (sym >= XK_F1 && sym <= XK_F24) {
    vk[0] = static_cast<unsigned char>(0x70 + (sym - XK_F1));
  } else {
    for (const SKeyRow& row : kKeys) {
      if (row.sym == sym) {
        vk[0] = row.vk[0];
        vk[1] = row.vk[1];
        return;
      }
    }
  }
}

bool IsKeypadDigit(KeySym sym) {
  return (sym >= XK_KP_0 && sym <= XK_KP_9) || sym == XK_KP_Decimal;
}

// The virtual keys of one keycode given its keysyms by shift level.
void KeycodeKeys(const KeySym* syms, int levels, unsigned char vk[2]) {
  vk[0] = vk[1] = 0;
  for (int i = 0; i < levels; ++i) {
    if (IsKeypadDigit(syms[i])) {
      VirtualKeys(syms[i], vk);
      return;
    }
  }
  for (int i = 0; i < levels && vk[0] == 0; ++i) VirtualKeys(syms[i], vk);
}

}  // namespace

namespace zet::os {

bool X11DisplayAvailable() {
  CDisplay display;
  return display.Get() != nullptr;
}

}  // namespace zet::os

bool CZetOs::GetKeyboardState(std::bitset<256>* down) {
  static std::mutex lock;  // Xlib is not initialised for threads; one query at a time
  std::lock_guard<std::mutex> hold(lock);
  down->reset();
  CDisplay display;
  if (!display.Get()) return false;
  const SX11& x = X11();
  int minCode = 0, maxCode = 0, levels = 0;
  x.DisplayKeycodes(display.Get(), &minCode, &maxCode);
  if (minCode < 8 || maxCode > 255 || maxCode < minCode) return false;
  KeySym* syms = x.GetKeyboardMapping(display.Get(), static_cast<unsigned char>(minCode),
                                      maxCode - minCode + 1, &levels);
  if (!syms) return false;
  char keys[32] = {};
  x.QueryKeymap(display.Get(), keys);
  for (int code = minCode; code <= maxCode; ++code) {
    if (!(static_cast<unsigned char>(keys[code / 8]) & (1u << (code % 8)))) continue;
    unsigned char vk[2];
    KeycodeKeys(syms + static_cast<size_t>(code - minCode) * levels, levels, vk);
    for (unsigned char v : vk)
      if (v) down->set(v);
  }
  x.Free(syms);
  return true;
}

bool CZetOs::IsKeyDown(int virtualKey) {
  std::bitset<256> down;
  return virtualKey > 0 && virtualKey < 256 && GetKeyboardState(&down) && down.test(virtualKey);
}
