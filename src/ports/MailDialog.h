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

// Where something can be done about a failure.
enum class MailField { None, To, Cc, Bcc, Files };

// Nothing has failed when there are no words.
struct MailFailure {
  std::string text;
  MailField field = MailField::None;
};

// What the window asks of the program while it is open. The window shows a failure and stays, with
// all that was typed.
class MailDialogHost {
 public:
  virtual ~MailDialogHost() = default;

  // Takes some time, during which messages are dispatched. `window` is the one that others, which
  // are opened meanwhile, belong to.
  virtual MailFailure Send(const MailForm& form, std::int32_t window) = 0;

  // Whether ChooseAddresses has something to show.
  virtual bool HasAddressBook() = 0;
  // Puts what the user chooses into the three lines of recipients.
  virtual MailFailure ChooseAddresses(MailForm& form, std::int32_t window) = 0;
};

class MailDialog {
 public:
  enum class Answer {
    Sent,
    Cancelled,
    Unavailable,  // there is no user, or no desktop to show it on
  };

  virtual ~MailDialog() = default;

  // Whether there is a user who could see a window of any mail system.
  virtual bool Available() = 0;

  // Brings the window to the front if it is open, and tells whether it is.
  virtual bool Raise() = 0;

  // Returns when the window has gone. `owner` is a window of the client, 0 for none.
  virtual Answer Show(const std::string& caption, std::int32_t owner, const MailForm& form,
                      MailDialogHost& host) = 0;
};

// For a program without windows.
class NoMailDialog final : public MailDialog {
 public:
  bool Available() override { return false; }
  bool Raise() override { return false; }
  Answer Show(const std::string&, std::int32_t, const MailForm&, MailDialogHost&) override {
    return Answer::Unavailable;
  }
};

}  // namespace quillon
