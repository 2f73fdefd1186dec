#include "automation/ProcessLifetime.h"

#include <combaseapi.h>
#include <exception>
#include <utility>

#include "automation/ComCall.h"

namespace quillon {
namespace {

constexpr wchar_t kWindowClass[] = L"QuillonServerProcess";
constexpr UINT_PTR kTimer = 1;
constexpr DWORD kAnswersGoOut = 300;  // milliseconds

HWND MakeWindow(WNDPROC procedure) {
  WNDCLASSEXW description = {};
  description.cbSize = sizeof description;
  description.lpfnWndProc = procedure;
  description.hInstance = GetModuleHandleW(nullptr);
  description.lpszClassName = kWindowClass;
  RegisterClassExW(&description);
  // Top-level, because only such a window hears that the session ends or that the process is asked
  // to close. Where there is no desktop to put it on, a message-only one does the rest.
  for (const HWND parent : {HWND{nullptr}, HWND_MESSAGE}) {
    const HWND window = CreateWindowExW(0, kWindowClass, L"Quillon", WS_OVERLAPPED, 0, 0, 0, 0,
                                        parent, nullptr, description.hInstance, nullptr);
    if (window != nullptr) return window;
  }
  throw HresultError(HRESULT_FROM_WIN32(GetLastError()));
}

}  // namespace

ProcessLifetime::ProcessLifetime(const Patience& patience)
    : patience_(patience), window_(MakeWindow(WindowProcedure)) {
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  CoAddRefServerProcess();
}

ProcessLifetime::~ProcessLifetime() {
  End();
  DestroyWindow(window_);
}

void ProcessLifetime::Acquire() noexcept {
  ++references_;
  CoAddRefServerProcess();
}

void ProcessLifetime::Release() noexcept {
  CoReleaseServerProcess();
  if (--references_ == 0) Wait(patience_.nextClient);
}

void ProcessLifetime::Serve(std::function<void()> revoke) {
  revoke_ = std::move(revoke);
  state_ = State::Serving;
  Wait(patience_.firstClient);
}

void ProcessLifetime::Run(EventLoop& loop,
                          const std::function<void(const std::string& text)>& unexpected) {
  bool ended = false;
  while (!ended) {
    try {
      loop.RunUntil([] { return false; }, kNoDeadline);  // until the message that ends the program
      ended = true;
    } catch (const std::exception& failure) {
      unexpected(failure.what());
    } catch (...) {
      unexpected("an unknown exception");
    }
  }
  End();
  // A call that was in progress has ended, but it is a thread of the system's that carries the
  // answer to the client; with the process it would be gone.
  if (references_ > 0) Sleep(kAnswersGoOut);
}

void ProcessLifetime::Stop() noexcept {
  End();
  PostQuitMessage(0);  // ends Run, and any wait of an operation in progress
}

void ProcessLifetime::End() noexcept {
  if (Ended()) return;
  Revoke();
  state_ = State::Ended;
  CoReleaseServerProcess();  // the process's own reference
}

void ProcessLifetime::Wait(UINT milliseconds) noexcept {
  if (!Ended()) SetTimer(window_, kTimer, milliseconds, nullptr);
}

void ProcessLifetime::OnPatienceLost() noexcept {
  KillTimer(window_, kTimer);
  if (references_ > 0 || Ended()) return;
  if (state_ == State::Closing) {
    Stop();
  } else {
    Revoke();
    state_ = State::Closing;
    Wait(patience_.lateClient);
  }
}

void ProcessLifetime::Revoke() noexcept {
  if (const auto revoke = std::exchange(revoke_, nullptr)) revoke();
}

LRESULT CALLBACK ProcessLifetime::WindowProcedure(HWND window, UINT message, WPARAM first,
                                                  LPARAM second) {
  auto* self = reinterpret_cast<ProcessLifetime*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcW(window, message, first, second);
  switch (message) {
    case WM_TIMER:
      self->OnPatienceLost();
      return 0;
    case WM_CLOSE:
      self->Stop();
      return 0;
    case WM_ENDSESSION:
      if (first != FALSE) self->Stop();
      return 0;
    default:
      return DefWindowProcW(window, message, first, second);
  }
}

}  // namespace quillon
