#include "platform/win32/Win32MessageBox.h"

#include <windows.h>

#include "platform/win32/Desktop.h"
#include "platform/win32/WideText.h"

namespace quillon {

void Win32MessageBox::Show(const std::string& title, const std::string& text, Icon icon) {
  if (!HasDesktop()) return;
  const UINT look = icon == Icon::Critical  ? MB_ICONERROR
                    : icon == Icon::Warning ? MB_ICONWARNING
                                            : 0;
  MessageBoxW(nullptr, WideFromUtf8(text).c_str(), WideFromUtf8(title).c_str(),
              MB_OK | MB_TASKMODAL | MB_SETFOREGROUND | look);
}

}  // namespace quillon
