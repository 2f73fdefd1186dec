// The dialog with the files that go with a message: adds by the system's dialog for files or by
// dropping them, removes, and renames what the recipient sees.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include "dialogs/FileList.h"
#include "dialogs/win32/DialogWindow.h"

namespace quillon {

class AttachmentsDialog final : public DialogWindow {
 public:
  AttachmentsDialog(EventLoop& loop, FileSystem& files, DialogSize& size,
                    std::vector<MailForm::File> list);

  // As the user has left it; to be taken when Run has returned IDOK.
  const std::vector<MailForm::File>& Files() const noexcept { return list_.Files(); }

 private:
  void OnOpen() override;
  int FirstControl() const override;
  void OnCommand(int control, int notification) override;
  LRESULT OnNotify(const NMHDR& header) override;
  void OnFilesDropped(const std::vector<std::string>& paths) override;
  void OnResize() override;

  void Add(const std::vector<std::string>& paths);
  void AskForFiles();
  void RemoveSelected();
  void RenameFocused() const;
  bool TakeName(const NMLVDISPINFOW& edited);
  void Fill();
  void EnableButtons() const;
  void ShowFailure(const std::string& text) const;

  FileList list_;
};

}  // namespace quillon
