#include "dialogs/win32/DialogWindow.h"

#include <algorithm>
#include <array>
#include <commctrl.h>
#include <shellapi.h>
#include <utility>

#include "dialogs/win32/resource.h"
#include "platform/win32/WideText.h"

namespace quillon {
namespace {

constexpr const wchar_t* kSelf = L"QuillonDialog";  // the property of the window that leads here
constexpr UINT kButtonPressed = WM_APP;
constexpr UINT_PTR kTimer = 1;
constexpr UINT kTimerPeriod = 250;      // milliseconds
constexpr UINT kOwnersPatience = 1000;  // milliseconds
constexpr unsigned kLeftTop = anchor::kLeft | anchor::kTop;

// A function that not every Windows has.
template <class Function>
Function* UserFunction(const char* name) {
  const HMODULE library = GetModuleHandleW(L"user32.dll");
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

int DpiOf(HWND window) {
  if (auto* const ask = UserFunction<UINT WINAPI(HWND)>("GetDpiForWindow")) {
    if (const UINT dpi = ask(window); dpi != 0) return static_cast<int>(dpi);
  }
  const HDC device = GetDC(window);
  const int dpi = GetDeviceCaps(device, LOGPIXELSX);
  ReleaseDC(window, device);
  return dpi;
}

// The system would scale the controls by itself on some versions and not on others.
void KeepScalingToOurselves(HWND window) {
  constexpr int kDisableAll = 1;
  using Behavior = BOOL WINAPI(HWND, int, int);
  if (auto* const put = UserFunction<Behavior>("SetDialogDpiChangeBehavior")) {
    put(window, kDisableAll, kDisableAll);
  }
}

Box BoxOf(const RECT& place) {
  return {place.left, place.top, place.right - place.left, place.bottom - place.top};
}

Box FrameOf(HWND window) {
  RECT place{};
  GetWindowRect(window, &place);
  return BoxOf(place);
}

bool IsComboBox(HWND control) {
  std::array<wchar_t, 20> name{};
  GetClassNameW(control, name.data(), static_cast<int>(name.size()));
  return lstrcmpiW(name.data(), WC_COMBOBOXW) == 0;
}

Box BoxInParent(HWND control) {
  RECT place{};
  GetWindowRect(control, &place);
  // What one sets of a combo box is its height with the list.
  if (IsComboBox(control)) {
    SendMessageW(control, CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(&place));
  }
  MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
  return BoxOf(place);
}

// A window that does not answer would keep the dialog from coming, and later from going.
HWND UsableOwner(HWND owner) {
  if (owner == nullptr || IsWindow(owner) == FALSE) return nullptr;
  DWORD_PTR answer = 0;
  const HWND top = GetAncestor(owner, GA_ROOT);
  const auto answered =
      SendMessageTimeoutW(top, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, kOwnersPatience, &answer);
  return answered != 0 ? top : nullptr;
}

MONITORINFO MonitorFor(HWND owner) {
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  const DWORD otherwise = owner != nullptr ? MONITOR_DEFAULTTONEAREST : MONITOR_DEFAULTTOPRIMARY;
  GetMonitorInfoW(MonitorFromWindow(owner, otherwise), &monitor);
  return monitor;
}

HICON ProgramIcon() {
  const HICON own = LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_PROGRAM));
  return own != nullptr ? own : LoadIconW(nullptr, IDI_APPLICATION);
}

std::vector<std::string> DroppedFiles(HDROP drop) {
  std::vector<std::string> paths;
  const UINT count = DragQueryFileW(drop, static_cast<UINT>(-1), nullptr, 0);
  paths.reserve(count);
  for (UINT index = 0; index < count; ++index) {
    std::wstring path(static_cast<std::size_t>(DragQueryFileW(drop, index, nullptr, 0)) + 1, L'\0');
    path.resize(DragQueryFileW(drop, index, path.data(), static_cast<UINT>(path.size())));
    paths.push_back(Utf8FromWide(path));
  }
  DragFinish(drop);
  return paths;
}

}  // namespace

DialogWindow::DialogWindow(EventLoop& loop, int resource, std::span<const ControlAnchor> anchors,
                           DialogSize& size)
    : loop_(loop), resource_(resource), anchors_(anchors), size_(size) {}

std::optional<int> DialogWindow::Run(HWND owner) {
  owner_ = UsableOwner(owner);
  result_.reset();
  // Also when the loop throws what somebody else's callback has left behind.
  struct Closing {
    DialogWindow& dialog;
    ~Closing() { dialog.Destroy(); }
  } const closing{*this};
  CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource_), owner_, &Procedure,
                     reinterpret_cast<LPARAM>(this));
  if (window_ == nullptr) return std::nullopt;
  Prepare();
  if (owner_ != nullptr) ownerDisabled_ = EnableWindow(owner_, FALSE) == FALSE;
  Show();
  // False when the process is to end; then too the dialog goes.
  loop_.RunUntil([this] { return window_ == nullptr; }, kNoDeadline);
  Destroy();
  return result_.value_or(IDCANCEL);
}

void DialogWindow::Close(int result) {
  if (window_ == nullptr) return;
  result_ = result;
  Destroy();
}

void DialogWindow::BringToFront() const {
  if (window_ == nullptr) return;
  if (IsIconic(window_) != FALSE) ShowWindow(window_, SW_RESTORE);
  const HWND top = GetLastActivePopup(window_);
  SetForegroundWindow(top);
  if (GetForegroundWindow() == top) return;
  // Windows lets nobody push himself before the user.
  FLASHWINFO flash{sizeof flash, top, FLASHW_ALL | FLASHW_TIMERNOFG, 3, 0};
  FlashWindowEx(&flash);
}

std::string DialogWindow::Text(int control) const {
  const HWND window = Control(control);
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(length));
  return Utf8FromWide(text);
}

void DialogWindow::SetText(int control, const std::string& text) const {
  SetWindowTextW(Control(control), WideFromUtf8(text).c_str());
}

// As the dialog manager does it: with the default button following, and texts selected.
void DialogWindow::Focus(int control) const {
  SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(control)), TRUE);
}

DialogWindow* DialogWindow::Of(HWND window) {
  return static_cast<DialogWindow*>(GetPropW(window, kSelf));
}

INT_PTR CALLBACK DialogWindow::Procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_INITDIALOG) {
    reinterpret_cast<DialogWindow*>(second)->Initialize(window);
    return FALSE;  // nobody has the keyboard yet
  }
  auto* const self = Of(window);
  if (self == nullptr) return FALSE;
  INT_PTR handled = FALSE;
  self->loop_.Contain([&] { handled = self->Handle(message, first, second); });
  return handled;
}

// The keys of all dialogs of the thread, whoever has got the message. Only for what is taken out of
// the queue.
LRESULT CALLBACK DialogWindow::KeyHook(int code, WPARAM first, LPARAM second) {
  auto* const message = reinterpret_cast<MSG*>(second);
  if (code == HC_ACTION && first == PM_REMOVE && message->message >= WM_KEYFIRST &&
      message->message <= WM_KEYLAST) {
    auto* const self = Of(GetAncestor(message->hwnd, GA_ROOT));
    if (self != nullptr) {
      const HWND window = self->window_;
      bool taken = false;
      self->loop_.Contain([&] { taken = self->OnKey(*message); });
      if (taken || IsDialogMessageW(window, message) != FALSE) *message = {};
    }
  }
  return CallNextHookEx(nullptr, code, first, second);
}

INT_PTR DialogWindow::Handle(UINT message, WPARAM first, LPARAM second) {
  switch (message) {
    case WM_COMMAND:
      if (HIWORD(first) == BN_CLICKED) {
        PostMessageW(window_, kButtonPressed, LOWORD(first), 0);
      } else {
        OnCommand(LOWORD(first), HIWORD(first));
      }
      return TRUE;
    case kButtonPressed:
      OnButton(static_cast<int>(first));
      return TRUE;
    case WM_NOTIFY: {
      const LRESULT answer = OnNotify(*reinterpret_cast<const NMHDR*>(second));
      if (window_ != nullptr) SetWindowLongPtrW(window_, DWLP_MSGRESULT, answer);
      return TRUE;
    }
    case WM_CLOSE:
      Cancel();
      return TRUE;
    case WM_TIMER:
      OnTimer();
      return TRUE;
    case WM_DROPFILES:
      OnFilesDropped(DroppedFiles(reinterpret_cast<HDROP>(first)));
      return TRUE;
    case WM_SIZE:
      ArrangeControls();
      OnResize();
      return TRUE;
    case WM_GETMINMAXINFO:
      OnMinimum(*reinterpret_cast<MINMAXINFO*>(second));
      return TRUE;
    case WM_DPICHANGED:
      OnDpiChanged(HIWORD(first), *reinterpret_cast<const RECT*>(second));
      return TRUE;
    case WM_DESTROY:
      RemovePropW(window_, kSelf);
      window_ = nullptr;
      return TRUE;
    default:
      return FALSE;
  }
}

void DialogWindow::Initialize(HWND window) {
  if (SetPropW(window, kSelf, this) == FALSE) {
    DestroyWindow(window);
    return;
  }
  window_ = window;
}

// What the template has made is what later sizes are reckoned from.
void DialogWindow::Prepare() {
  KeepScalingToOurselves(window_);
  hook_ = SetWindowsHookExW(WH_GETMESSAGE, &KeyHook, nullptr, GetCurrentThreadId());
  SetTimer(window_, kTimer, kTimerPeriod, nullptr);
  const auto icon = reinterpret_cast<LPARAM>(ProgramIcon());
  SendMessageW(window_, WM_SETICON, ICON_BIG, icon);
  SendMessageW(window_, WM_SETICON, ICON_SMALL, icon);
  baseDpi_ = dpi_ = DpiOf(window_);
  baseClient_ = ClientSize();
  const Box frame = FrameOf(window_);
  baseFrame_ = {frame.width, frame.height};
  auto* const font = reinterpret_cast<HFONT>(SendMessageW(window_, WM_GETFONT, 0, 0));
  GetObjectW(font, sizeof baseFont_, &baseFont_);
  controls_.clear();
  for (HWND control = GetWindow(window_, GW_CHILD); control != nullptr;
       control = GetWindow(control, GW_HWNDNEXT)) {
    const auto found = std::find_if(anchors_.begin(), anchors_.end(), [&](const auto& row) {
      return row.control == GetDlgCtrlID(control);
    });
    controls_.push_back(
        {control, found != anchors_.end() ? found->edges : kLeftTop, BoxInParent(control)});
  }
  OnOpen();
  Place();
}

void DialogWindow::Place() {
  Extent frame = baseFrame_;
  if (size_) {
    frame.width += std::max(Scaled(size_->width) - baseClient_.width, 0);
    frame.height += std::max(Scaled(size_->height) - baseClient_.height, 0);
  }
  const Box work = BoxOf(MonitorFor(owner_).rcWork);
  const bool overOwner =
      owner_ != nullptr && IsWindowVisible(owner_) != FALSE && IsIconic(owner_) == FALSE;
  const Box place = CentredBox(frame, overOwner ? FrameOf(owner_) : work, work);
  SetWindowPos(window_, nullptr, place.left, place.top, place.width, place.height,
               SWP_NOACTIVATE | SWP_NOZORDER);
}

void DialogWindow::Show() const {
  ShowWindow(window_, SW_SHOW);
  Focus(FirstControl());
  BringToFront();
}

void DialogWindow::OnButton(int control) {
  if (control == IDCANCEL) return Cancel();
  const HWND button = Control(control);
  if (button == nullptr || IsWindowEnabled(button) != FALSE) OnCommand(control, BN_CLICKED);
}

void DialogWindow::Cancel() {
  if (MayCancel()) Close(IDCANCEL);
}

// A system's window that is open above (for files, a message) has a loop of its own, which knows
// nothing of our timers. An owner in another process goes without a word.
void DialogWindow::OnTimer() {
  loop_.RunTimers();
  if (owner_ != nullptr && IsWindow(owner_) == FALSE) Close(IDCANCEL);
}

void DialogWindow::OnMinimum(MINMAXINFO& info) const {
  info.ptMinTrackSize = {ScaledLength(baseFrame_.width, dpi_, baseDpi_),
                         ScaledLength(baseFrame_.height, dpi_, baseDpi_)};
}

void DialogWindow::OnDpiChanged(int dpi, const RECT& place) {
  dpi_ = dpi;
  LOGFONTW description = baseFont_;
  description.lfHeight = ScaledLength(baseFont_.lfHeight, dpi_, baseDpi_);
  const HFONT font = CreateFontIndirectW(&description);
  for (const auto& control : controls_) {
    SendMessageW(control.window, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
  }
  if (const HFONT previous = std::exchange(font_, font)) DeleteObject(previous);
  const Box frame = BoxOf(place);
  SetWindowPos(window_, nullptr, frame.left, frame.top, frame.width, frame.height,
               SWP_NOACTIVATE | SWP_NOZORDER);
  ArrangeControls();
  OnResize();
  InvalidateRect(window_, nullptr, TRUE);
}

void DialogWindow::ArrangeControls() {
  if (controls_.empty() || IsIconic(window_) != FALSE) return;
  const auto scaled = [this](int length) { return ScaledLength(length, dpi_, baseDpi_); };
  const Extent base{scaled(baseClient_.width), scaled(baseClient_.height)};
  const Extent client = ClientSize();
  HDWP moves = BeginDeferWindowPos(static_cast<int>(controls_.size()));
  for (const auto& control : controls_) {
    const Box start{scaled(control.base.left), scaled(control.base.top), scaled(control.base.width),
                    scaled(control.base.height)};
    const Box box = AnchoredBox(start, control.edges, base, client);
    if (moves == nullptr) break;
    moves = DeferWindowPos(moves, control.window, nullptr, box.left, box.top, box.width, box.height,
                           SWP_NOACTIVATE | SWP_NOZORDER | SWP_NOCOPYBITS);
  }
  if (moves != nullptr) EndDeferWindowPos(moves);
}

Extent DialogWindow::ClientSize() const {
  RECT client{};
  GetClientRect(window_, &client);
  return {client.right, client.bottom};
}

void DialogWindow::RememberSize() const {
  if (IsZoomed(window_) != FALSE || IsIconic(window_) != FALSE) return;
  const Extent client = ClientSize();
  if (client == Extent{ScaledLength(baseClient_.width, dpi_, baseDpi_),
                       ScaledLength(baseClient_.height, dpi_, baseDpi_)}) {
    size_.reset();
    return;
  }
  size_ = Extent{ScaledLength(client.width, USER_DEFAULT_SCREEN_DPI, dpi_),
                 ScaledLength(client.height, USER_DEFAULT_SCREEN_DPI, dpi_)};
}

// The owner first, or Windows would give the keyboard to another program.
void DialogWindow::Destroy() {
  if (std::exchange(ownerDisabled_, false) && IsWindow(owner_) != FALSE) EnableWindow(owner_, TRUE);
  if (window_ != nullptr) {
    RememberSize();
    DestroyWindow(window_);
  }
  if (const HHOOK hook = std::exchange(hook_, nullptr)) UnhookWindowsHookEx(hook);
  if (const HFONT font = std::exchange(font_, nullptr)) DeleteObject(font);
}

}  // namespace quillon
