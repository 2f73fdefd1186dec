// The window in which the user writes and sends a message.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quillon {

// What is in the window. All texts are UTF-8.
struct MailForm {
  struct File {
    std::string path;
    std::string name;  // what the recipient sees
  };

  std::string to;  // recipients as the user types them, several in one line
  std::string cc;
  std::string bcc;
  std::string subject;
  std::string text;  // line ends are CR LF
  std::vector<File> files;
  std::int16_t importance = 3;  // 1 (highest) to 5
  bool receipt = false;
};

// What the window asks of the program while it is open. A failure is returned as its words, for the
// window to show; empty is success. The window stays, with all that was typed.
class MailDialogHost {
 public:
  virtual ~MailDialogHost() = default;

  // Takes some time, during which messages are dispatched.
  virtual std::string Send(const MailForm& form) = 0;

  // Whether ChooseAddresses has something to show.
  virtual bool HasAddressBook() = 0;
  // Puts what the user chooses into the three lines of recipients.
  virtual std::string ChooseAddresses(MailForm& form) = 0;
};

class MailDialog {
 public:
  enum class Answer {
    Sent,
    Cancelled,
    Unavailable,  // there is no user, or no desktop to show it on
  };

  virtual ~MailDialog() = default;

  // Returns when the window has gone. `owner` is a window of the client, 0 for none.
  virtual Answer Show(const std::string& caption, std::int32_t owner, const MailForm& form,
                      MailDialogHost& host) = 0;
};

// For a program without windows.
class NoMailDialog final : public MailDialog {
 public:
  Answer Show(const std::string&, std::int32_t, const MailForm&, MailDialogHost&) override {
    return Answer::Unavailable;
  }
};

}  // namespace quillon
