// How long the server process lives: while an object or a lock of a client is there, and a moment
// longer.
//
// - serving: the class objects are registered. When there has been no client for a while, at the
//   start or since the last one let go, they are revoked.
// - closing: no new client is sent here any more, but one that was on its way is still served.
// - ended, when nobody came: Run returns, and the class objects refuse what may still arrive.
//
// A hidden window takes WM_CLOSE and WM_ENDSESSION as the wish to end at once; who waits for an
// answer then still gets it.
#pragma once

#include <windows.h>
#include <functional>
#include <string>

#include "ports/EventLoop.h"

namespace quillon {

class ProcessLifetime {
 public:
  struct Patience {  // milliseconds
    UINT firstClient = 30000;
    UINT nextClient = 1200;  // a script host needs about half a second until it asks for its object
    // On a busy machine as long as a client takes between asking for the class and for the object:
    // Wine, unlike Windows, does not ask again when it is refused.
    UINT lateClient = 1000;
  };

  ProcessLifetime() : ProcessLifetime(Patience{}) {}
  explicit ProcessLifetime(const Patience& patience);
  ~ProcessLifetime();
  ProcessLifetime(const ProcessLifetime&) = delete;
  ProcessLifetime& operator=(const ProcessLifetime&) = delete;

  void Acquire() noexcept;
  void Release() noexcept;

  // Refuse new work.
  bool Ended() const noexcept { return state_ == State::Ended; }

  // From now on the process serves clients; `revoke` takes the class objects back and is called
  // once.
  void Serve(std::function<void()> revoke);

  // Runs the loop until the end. A failure that no operation has taken is told to `unexpected`, and
  // the clients are served on.
  void Run(EventLoop& loop, const std::function<void(const std::string& text)>& unexpected);

  void Stop() noexcept;

 private:
  enum class State { Starting, Serving, Closing, Ended };

  static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM first, LPARAM second);
  void Wait(UINT milliseconds) noexcept;
  void OnPatienceLost() noexcept;
  void Revoke() noexcept;
  void End() noexcept;

  const Patience patience_;
  const HWND window_;
  State state_ = State::Starting;
  unsigned references_ = 0;
  std::function<void()> revoke_;
};

// Keeps the process alive for as long as it lives itself.
class ProcessReference {
 public:
  explicit ProcessReference(ProcessLifetime& lifetime) noexcept : lifetime_(lifetime) {
    lifetime_.Acquire();
  }
  ProcessReference(const ProcessReference&) = delete;
  ProcessReference& operator=(const ProcessReference&) = delete;
  ~ProcessReference() { lifetime_.Release(); }

 private:
  ProcessLifetime& lifetime_;
};

}  // namespace quillon
