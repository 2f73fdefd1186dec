// Shut while a library of another maker works. Such a library may show windows and let calls of
// other clients in meanwhile, but takes none itself: whoever comes then is told to try again.
#pragma once

#include <exception>

namespace quillon {

// Not an error of the client's: the call has not begun and can be made again.
class MailSystemBusy : public std::exception {
 public:
  const char* what() const noexcept override { return "The mail system is busy."; }
};

class BusyGate {
 public:
  bool Shut() const noexcept { return shut_; }

  // Throws MailSystemBusy.
  void Pass() const {
    if (shut_) throw MailSystemBusy();
  }

  // Open for as long as it lives, and then again as it was: the call at work waits for a user, and
  // the library is not at work.
  class Pause {
   public:
    explicit Pause(BusyGate& gate) noexcept : gate_(gate), before_(gate.shut_) {
      gate_.shut_ = false;
    }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause() { gate_.shut_ = before_; }

   private:
    BusyGate& gate_;
    const bool before_;
  };

  // Keeps the gate shut for as long as it lives, where that is `needed`.
  class Hold {
   public:
    Hold(BusyGate& gate, bool needed) noexcept : gate_(gate), before_(gate.shut_) {
      if (needed) gate_.shut_ = true;
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
    ~Hold() { gate_.shut_ = before_; }

   private:
    BusyGate& gate_;
    const bool before_;
  };

 private:
  bool shut_ = false;
};

}  // namespace quillon
