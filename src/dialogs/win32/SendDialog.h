// The dialog in which the user writes a message and sends it.
#pragma once

#include <array>
#include <utility>

#include "dialogs/win32/DialogWindow.h"
#include "ports/MailDialog.h"

namespace quillon {

class FileSystem;

// How large the user has made the dialogs of this process.
struct MailDialogSizes {
  DialogSize send;
  DialogSize attachments;
};

class SendDialog final : public DialogWindow {
 public:
  SendDialog(EventLoop& loop, FileSystem& files, MailDialogSizes& sizes, std::string caption,
             MailForm form, MailDialogHost& host);

  // Also when the dialog has been taken away before the message had left.
  bool Sent() const noexcept { return sent_; }

 private:
  // An edit control, and what stood in it before the user came.
  struct Field {
    int control;
    std::string MailForm::*text;
    std::string shown;
  };

  void OnOpen() override;
  int FirstControl() const override;
  void OnCommand(int control, int notification) override;
  void OnFilesDropped(const std::vector<std::string>& paths) override;
  bool OnKey(const MSG& message) override;
  bool MayCancel() const override { return !busy_; }

  void OnText(int notification);
  void Fill();
  void Read();
  void ShowFiles() const;
  void Send();
  void ChooseAddresses();
  void EditFiles();
  // Calls the host while nothing of the dialog can be used.
  template <class Call>
  MailFailure Ask(Call&& call);
  void EnableControls(bool on) const;
  void ShowMessage(const std::string& text, bool isFailure) const;
  void Fail(const MailFailure& failure) const;

  FileSystem& files_;
  MailDialogSizes& sizes_;
  const std::string caption_;
  MailForm form_;
  MailDialogHost& host_;
  std::array<Field, 5> fields_;
  std::pair<DWORD, DWORD> selection_;  // in the text, while something else has the keyboard
  bool busy_ = false;
  bool sent_ = false;
};

}  // namespace quillon
