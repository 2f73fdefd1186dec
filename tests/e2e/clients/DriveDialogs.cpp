// Works the windows of a server as a user does, by keys and mouse alone, and reads what they show.
//
// Commands come from standard input: UTF-8, one to a line, words between tabs, with \n, \t and
// \\ in them. Each is answered by one line of ASCII: "ok" and a JSON string, or "failed" and the
// reason. NAME is the label of a control: the text on it, or that of the label in front of it.
#include <windows.h>
#include <algorithm>
#include <array>
#include <atomic>
#include <commctrl.h>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <shellapi.h>
#include <shlobj.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Watching.h"
#include "platform/win32/WideText.h"

namespace {

using Words = std::vector<std::wstring>;
using quillon::Utf8FromWide;
using quillon::WideFromUtf8;

[[noreturn]] void Fail(const std::wstring& reason) {
  throw std::runtime_error(Utf8FromWide(reason));
}

std::wstring ClassOf(HWND window) {
  wchar_t name[64] = {};
  GetClassNameW(window, name, 64);
  return name;
}

// As it is read aloud: without the mark of the access key, the dots and the colon.
std::wstring Plain(std::wstring label) {
  std::erase(label, L'&');
  const auto end = label.find_last_not_of(L".:\u2026 ");
  return label.substr(0, end == std::wstring::npos ? 0 : end + 1);
}

BOOL CALLBACK AddVisible(HWND control, LPARAM list) {
  if (IsWindowVisible(control) != FALSE) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(control);
  }
  return TRUE;
}

std::vector<HWND> ControlsOf(HWND window) {
  std::vector<HWND> controls;
  EnumChildWindows(window, &AddVisible, reinterpret_cast<LPARAM>(&controls));
  return controls;
}

bool IsLabel(HWND control) {
  return ClassOf(control) == L"Static";
}

bool HasOwnText(HWND control) {
  return IsLabel(control) || ClassOf(control) == L"Button";
}

// As the system knows it: a window need not answer.
std::wstring TitleOf(HWND window) {
  std::array<wchar_t, 200> text{};
  InternalGetWindowText(window, text.data(), static_cast<int>(text.size()));
  return text.data();
}

HWND FindTop(const std::wstring& title) {
  for (HWND window = nullptr;
       (window = FindWindowExW(nullptr, window, nullptr, nullptr)) != nullptr;) {
    if (IsWindowVisible(window) != FALSE && TitleOf(window) == title) return window;
  }
  return nullptr;
}

void SendOne(INPUT input) {
  if (SendInput(1, &input, sizeof input) != 1) Fail(L"the system takes no input");
}

void SendKey(WORD key, DWORD flags) {
  constexpr WORD kExtended[] = {VK_UP,  VK_DOWN,  VK_LEFT, VK_RIGHT,  VK_HOME,
                                VK_END, VK_PRIOR, VK_NEXT, VK_INSERT, VK_DELETE};
  INPUT input{};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = key;
  input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
  input.ki.dwFlags = flags;
  for (const WORD extended : kExtended) {
    if (key == extended) input.ki.dwFlags |= KEYEVENTF_EXTENDEDKEY;
  }
  SendOne(input);
}

void SendCharacter(wchar_t unit, DWORD flags) {
  INPUT input{};
  input.type = INPUT_KEYBOARD;
  input.ki.wScan = unit;
  input.ki.dwFlags = KEYEVENTF_UNICODE | flags;
  SendOne(input);
}

void SendMouse(DWORD flags) {
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = flags;
  SendOne(input);
}

WORD KeyNamed(const std::wstring& name) {
  static const std::map<std::wstring, WORD> keys{
      {L"Tab", VK_TAB},     {L"Enter", VK_RETURN}, {L"Escape", VK_ESCAPE}, {L"Space", VK_SPACE},
      {L"Up", VK_UP},       {L"Down", VK_DOWN},    {L"Left", VK_LEFT},     {L"Right", VK_RIGHT},
      {L"Home", VK_HOME},   {L"End", VK_END},      {L"Delete", VK_DELETE}, {L"Back", VK_BACK},
      {L"F2", VK_F2},       {L"F4", VK_F4},        {L"Alt", VK_MENU},      {L"Ctrl", VK_CONTROL},
      {L"Shift", VK_SHIFT}, {L"PageUp", VK_PRIOR}, {L"PageDown", VK_NEXT},
  };
  const auto found = keys.find(name);
  if (found != keys.end()) return found->second;
  if (name.size() != 1) Fail(L"there is no key " + name);
  return static_cast<WORD>(LOBYTE(VkKeyScanW(name[0])));
}

// As Ctrl+A: all go down in turn, and up the other way.
void PressTogether(const std::wstring& chord) {
  std::vector<WORD> keys;
  for (std::size_t begin = 0; begin <= chord.size();) {
    const auto end = std::min(chord.find(L'+', begin), chord.size());
    keys.push_back(KeyNamed(chord.substr(begin, end - begin)));
    begin = end + 1;
  }
  for (const WORD key : keys) SendKey(key, 0);
  for (auto key = keys.rbegin(); key != keys.rend(); ++key) SendKey(*key, KEYEVENTF_KEYUP);
}

void ClickAt(int x, int y) {
  if (SetCursorPos(x, y) == FALSE) Fail(L"the mouse does not move");
  SendMouse(MOUSEEVENTF_LEFTDOWN);
  SendMouse(MOUSEEVENTF_LEFTUP);
}

HANDLE OpenProcessOf(HWND window) {
  DWORD id = 0;
  GetWindowThreadProcessId(window, &id);
  return OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, id);
}

// Memory of another process, for what messages do not carry there.
class ForeignMemory {
 public:
  ForeignMemory(HWND window, std::size_t size)
      : process_(OpenProcessOf(window)),
        place_(VirtualAllocEx(process_, nullptr, size, MEM_COMMIT, PAGE_READWRITE)) {
    if (place_ == nullptr) Fail(L"the other process gives no memory");
  }
  ForeignMemory(const ForeignMemory&) = delete;
  ForeignMemory& operator=(const ForeignMemory&) = delete;
  ~ForeignMemory() {
    if (!kept_) VirtualFreeEx(process_, place_, 0, MEM_RELEASE);
    CloseHandle(process_);
  }

  char* At(std::size_t offset) const { return static_cast<char*>(place_) + offset; }
  void Write(std::size_t offset, const void* bytes, std::size_t size) const {
    WriteProcessMemory(process_, At(offset), bytes, size, nullptr);
  }
  void Read(std::size_t offset, void* bytes, std::size_t size) const {
    ReadProcessMemory(process_, At(offset), bytes, size, nullptr);
  }
  void Keep() { kept_ = true; }

 private:
  const HANDLE process_;
  void* const place_;
  bool kept_ = false;
};

std::wstring CellOf(HWND list, int row, int column) {
  constexpr std::size_t kLetters = 512;
  ForeignMemory memory(list, sizeof(LVITEMW) + kLetters * sizeof(wchar_t));
  LVITEMW item{};
  item.iSubItem = column;
  item.pszText = reinterpret_cast<wchar_t*>(memory.At(sizeof item));
  item.cchTextMax = kLetters;
  memory.Write(0, &item, sizeof item);
  SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
               reinterpret_cast<LPARAM>(memory.At(0)));
  wchar_t text[kLetters] = {};
  memory.Read(sizeof item, text, sizeof text);
  text[kLetters - 1] = L'\0';
  return text;
}

std::wstring RowsOfView(HWND list) {
  auto* const header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
  const auto columns =
      header == nullptr ? 1 : std::max<int>(1, SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
  const int rows = SendMessageW(list, LVM_GETITEMCOUNT, 0, 0);
  std::wstring text;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      text += CellOf(list, row, column) + (column + 1 < columns ? L"\t" : L"\n");
    }
  }
  return text;
}

std::wstring RowsOfBox(HWND list) {
  std::wstring text;
  const int rows = SendMessageW(list, LB_GETCOUNT, 0, 0);
  for (int row = 0; row < rows; ++row) {
    const auto index = static_cast<WPARAM>(row);
    std::wstring line(static_cast<std::size_t>(SendMessageW(list, LB_GETTEXTLEN, index, 0)), L' ');
    SendMessageW(list, LB_GETTEXT, index, reinterpret_cast<LPARAM>(line.data()));
    text += line + L"\n";
  }
  return text;
}

// A window of this program's own, as a client has one. It lives on a thread that serves it.
class OwnWindow {
 public:
  explicit OwnWindow(const std::wstring& title) : thread_([this, title] { Serve(title); }) {
    if (!WaitUntil([this] { return window_ != nullptr; })) Fail(L"there is no window");
  }
  OwnWindow(const OwnWindow&) = delete;
  OwnWindow& operator=(const OwnWindow&) = delete;
  ~OwnWindow() {
    PostMessageW(window_, WM_CLOSE, 0, 0);
    thread_.join();
  }

  HWND Window() const { return window_; }

 private:
  void Serve(const std::wstring& title) {
    const HWND window =
        CreateWindowExW(0, L"#32770", title.c_str(), WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100, 80, 500,
                        400, nullptr, nullptr, nullptr, nullptr);
    window_ = window;
    MSG message;
    while (IsWindow(window) != FALSE && GetMessageW(&message, nullptr, 0, 0) > 0) {
      const bool close = message.message == WM_CLOSE;
      DispatchMessageW(&message);
      if (close && IsWindow(window) != FALSE) DestroyWindow(window);
    }
  }

  std::atomic<HWND> window_ = nullptr;
  std::thread thread_;
};

// What stands on the screen in a rectangle, as a bitmap file.
void SavePicture(const RECT& place, const std::wstring& file) {
  const LONG width = place.right - place.left;
  const LONG height = place.bottom - place.top;
  const auto stride = (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, height, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
  std::vector<char> pixels(stride * static_cast<std::size_t>(height));
  const HDC screen = GetDC(nullptr);
  const HDC copy = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
  const HGDIOBJ before = SelectObject(copy, bitmap);
  BitBlt(copy, 0, 0, width, height, screen, place.left, place.top, SRCCOPY);
  SelectObject(copy, before);
  GetDIBits(screen, bitmap, 0, static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
  DeleteObject(bitmap);
  DeleteDC(copy);
  ReleaseDC(nullptr, screen);
  BITMAPFILEHEADER header{};
  header.bfType = 0x4D42;
  header.bfOffBits = sizeof header + sizeof info.bmiHeader;
  header.bfSize = static_cast<DWORD>(header.bfOffBits + pixels.size());
  std::ofstream out(Utf8FromWide(file), std::ios::binary);
  out.write(reinterpret_cast<const char*>(&header), sizeof header);
  out.write(reinterpret_cast<const char*>(&info.bmiHeader), sizeof info.bmiHeader);
  out.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));
  if (!out.flush()) Fail(L"the picture cannot be written");
}

class Driver {
 public:
  std::wstring Do(const Words& words) {
    const auto found = commands_.find(words[0]);
    if (found == commands_.end()) Fail(L"there is no command " + words[0]);
    static const std::wstring none;
    return found->second(words.size() > 1 ? words[1] : none, words);
  }

 private:
  using Command = std::function<std::wstring(const std::wstring& word, const Words& words)>;

  // Waits for the window, which is the current one from then on.
  std::wstring Window(const std::wstring& title) {
    if (!WaitUntil([&] { return (window_ = FindTop(title)) != nullptr; })) {
      Fail(L"no window " + title);
    }
    return {};
  }

  std::wstring Closed() {
    const auto hasGone = [this] { return IsWindowVisible(window_) == FALSE; };
    if (!WaitUntil(hasGone)) Fail(L"the window is still there");
    return {};
  }

  std::wstring Gone(const std::wstring& title) {
    if (!WaitUntil([&] { return FindTop(title) == nullptr; })) Fail(title + L" is still there");
    return {};
  }

  // What is typed goes to whoever has the keyboard: that must be the current window.
  void NeedKeyboard() {
    if (WaitUntil([this] { return GetForegroundWindow() == window_; })) return;
    Fail(L"the keyboard is with [" + TitleOf(GetForegroundWindow()) + L"]");
  }

  RECT TitleBar() {
    TITLEBARINFO bar{};
    bar.cbSize = sizeof bar;
    if (GetTitleBarInfo(window_, &bar) == FALSE) Fail(L"the window has no title bar");
    return bar.rcTitleBar;
  }

  HWND Control(const std::wstring& name) {
    if (name[0] == L'#') return GetDlgItem(window_, std::stoi(name.substr(1)));
    HWND found = nullptr;
    const auto isThere = [&] {
      const auto controls = ControlsOf(window_);
      for (std::size_t i = 0; i < controls.size() && found == nullptr; ++i) {
        if (!HasOwnText(controls[i]) || Plain(WideTextOf(controls[i])) != name) continue;
        found = IsLabel(controls[i]) && i + 1 < controls.size() ? controls[i + 1] : controls[i];
      }
      return found != nullptr;
    };
    if (!WaitUntil(isThere)) Fail(L"there is no " + name);
    return found;
  }

  std::wstring NameOf(HWND control) {
    if (control == window_ || control == nullptr) return {};
    if (HasOwnText(control)) return Plain(WideTextOf(control));
    std::wstring label;
    for (const HWND other : ControlsOf(window_)) {
      if (other == control) break;
      if (IsLabel(other)) label = Plain(WideTextOf(other));
    }
    return label;
  }

  std::wstring Keys(const Words& chords) {
    for (std::size_t i = 1; i < chords.size(); ++i) {
      NeedKeyboard();
      PressTogether(chords[i]);
    }
    return {};
  }

  std::wstring Type(const std::wstring& text) {
    NeedKeyboard();
    for (const wchar_t unit : text) {
      if (unit == L'\n') {
        PressTogether(L"Enter");
        continue;
      }
      SendCharacter(unit, 0);
      SendCharacter(unit, KEYEVENTF_KEYUP);
    }
    return {};
  }

  std::wstring Until(const std::wstring& name, const std::wstring& part) {
    std::wstring text;
    const auto says = [&] {
      text = WideTextOf(Control(name));
      return text.find(part) != std::wstring::npos;
    };
    if (!WaitUntil(says)) Fail(name + L" says [" + text + L"]");
    return text;
  }

  std::wstring Click(const std::wstring& name) {
    const HWND control = Control(name);
    RECT place{};
    GetWindowRect(control, &place);
    ClickAt((place.left + place.right) / 2, (place.top + place.bottom) / 2);
    return {};
  }

  std::wstring CloseBox() {
    const RECT bar = TitleBar();
    const LONG half = (bar.bottom - bar.top) / 2;
    ClickAt(bar.right - half, bar.top + half);
    return {};
  }

  std::wstring Focus() {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    NeedKeyboard();
    GetGUIThreadInfo(GetWindowThreadProcessId(window_, nullptr), &info);
    return NameOf(info.hwndFocus);
  }

  std::wstring Rows(const std::wstring& name) {
    const HWND list = Control(name);
    return ClassOf(list) == WC_LISTVIEWW ? RowsOfView(list) : RowsOfBox(list);
  }

  std::wstring Place() {
    RECT place{};
    GetWindowRect(window_, &place);
    return std::to_wstring(place.left) + L" " + std::to_wstring(place.top) + L" " +
           std::to_wstring(place.right) + L" " + std::to_wstring(place.bottom);
  }

  // By its lower right corner.
  std::wstring Drag(int right, int down) {
    RECT place{};
    GetWindowRect(window_, &place);
    SetCursorPos(place.right - 2, place.bottom - 2);
    SendMouse(MOUSEEVENTF_LEFTDOWN);
    SetCursorPos(place.right - 2 + right, place.bottom - 2 + down);
    SendMouse(MOUSEEVENTF_LEFTUP);
    return {};
  }

  std::wstring Drop(const Words& files) {
    DROPFILES head{sizeof(DROPFILES), {10, 10}, FALSE, TRUE};
    std::wstring list;
    for (std::size_t i = 1; i < files.size(); ++i) list += files[i] + L'\0';
    list += L'\0';
    const auto size = list.size() * sizeof(wchar_t);
    ForeignMemory memory(window_, sizeof head + size);
    memory.Write(0, &head, sizeof head);
    memory.Write(sizeof head, list.data(), size);
    memory.Keep();
    PostMessageW(window_, WM_DROPFILES, reinterpret_cast<WPARAM>(memory.At(0)), 0);
    return {};
  }

  std::wstring Open(const std::wstring& title) {
    own_ = std::make_unique<OwnWindow>(title);
    return std::to_wstring(reinterpret_cast<std::uintptr_t>(own_->Window()));
  }

  std::wstring Picture(const std::wstring& file) {
    SetCursorPos(0, 0);
    UpdateWindow(window_);
    RECT place{};
    GetWindowRect(window_, &place);
    SavePicture(place, file);
    return {};
  }

  HWND window_ = nullptr;
  std::unique_ptr<OwnWindow> own_;

  const std::map<std::wstring, Command> commands_{
      {L"window", [this](auto& title, auto&) { return Window(title); }},
      {L"closed", [this](auto&, auto&) { return Closed(); }},
      {L"gone", [this](auto& title, auto&) { return Gone(title); }},
      {L"shown", [](auto& title, auto&) { return FindTop(title) != nullptr ? L"1" : L"0"; }},
      {L"keys", [this](auto&, auto& words) { return Keys(words); }},
      {L"type", [this](auto& text, auto&) { return Type(text); }},
      {L"click", [this](auto& name, auto&) { return Click(name); }},
      {L"closebox", [this](auto&, auto&) { return CloseBox(); }},
      {L"read", [this](auto& name, auto&) { return WideTextOf(Control(name)); }},
      {L"until", [this](auto& name, auto& words) { return Until(name, words.at(2)); }},
      {L"rows", [this](auto& name, auto&) { return Rows(name); }},
      {L"style",
       [this](auto& name, auto&) {
         return std::to_wstring(GetWindowLongW(Control(name), GWL_STYLE));
       }},
      {L"focus", [this](auto&, auto&) { return Focus(); }},
      {L"enabled",
       [this](auto& name, auto&) {
         return IsWindowEnabled(name.empty() ? window_ : Control(name)) != FALSE ? L"1" : L"0";
       }},
      {L"place", [this](auto&, auto&) { return Place(); }},
      {L"drag",
       [this](auto&, auto& words) { return Drag(std::stoi(words.at(1)), std::stoi(words.at(2))); }},
      {L"drop", [this](auto&, auto& words) { return Drop(words); }},
      {L"open", [this](auto& title, auto&) { return Open(title); }},
      {L"destroy",
       [this](auto&, auto&) {
         own_.reset();
         return std::wstring();
       }},
      {L"picture", [this](auto& file, auto&) { return Picture(file); }},
  };
};

Words Split(const std::wstring& line) {
  Words words(1);
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == L'\t') {
      words.emplace_back();
    } else if (line[i] == L'\\' && i + 1 < line.size()) {
      const wchar_t next = line[++i];
      words.back() += next == L'n' ? L'\n' : next == L't' ? L'\t' : next;
    } else {
      words.back() += line[i];
    }
  }
  return words;
}

void Answer(const char* word, const std::wstring& text) {
  std::printf("%s \"", word);
  for (const wchar_t unit : text) {
    if (unit >= L' ' && unit <= L'~' && unit != L'"' && unit != L'\\') {
      std::putchar(unit);
    } else {
      std::printf("\\u%04x", static_cast<unsigned>(unit));
    }
  }
  std::puts("\"");
  std::fflush(stdout);
}

}  // namespace

int main() {
  Driver driver;
  for (std::string line; std::getline(std::cin, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    try {
      Answer("ok", driver.Do(Split(WideFromUtf8(line))));
    } catch (const std::exception& error) {
      Answer("failed", WideFromUtf8(error.what()));
    }
  }
  return 0;
}
