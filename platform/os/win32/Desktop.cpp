// The desktop: MessageBoxA, MessageBeep and the asynchronous key state.
#include <windows.h>

#include "zet/ZetOs.h"

int CZetOs::ShowMessageBox(const char* text, const char* caption, unsigned style) {
  return MessageBoxA(nullptr, text ? text : "", caption ? caption : "", style);
}

bool CZetOs::PlayMessageBeep(unsigned type) { return MessageBeep(type) != 0; }

bool CZetOs::IsKeyDown(int virtualKey) {
  return virtualKey >= 0 && virtualKey <= 255 && (GetAsyncKeyState(virtualKey) & 0x8000) != 0;
}

bool CZetOs::GetKeyboardState(std::bitset<256>* down) {
  down->reset();
  for (int vk = 1; vk < 256; ++vk)
    if (GetAsyncKeyState(vk) & 0x8000) down->set(static_cast<size_t>(vk));
  return true;
}
