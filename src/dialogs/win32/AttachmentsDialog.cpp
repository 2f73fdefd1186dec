#include "dialogs/win32/AttachmentsDialog.h"

#include <algorithm>
#include <array>
#include <shellapi.h>
#include <utility>

#include "dialogs/MailForm.h"
#include "dialogs/win32/FileChooser.h"
#include "dialogs/win32/resource.h"
#include "platform/win32/WideText.h"

namespace quillon {
namespace {

constexpr unsigned kLeftRight = anchor::kLeft | anchor::kRight;
constexpr std::array kAnchors{
    ControlAnchor{IDC_LIST, kLeftRight | anchor::kTop | anchor::kBottom},
    ControlAnchor{IDC_ADD, anchor::kRight | anchor::kTop},
    ControlAnchor{IDC_REMOVE, anchor::kRight | anchor::kTop},
    ControlAnchor{IDC_RENAME, anchor::kRight | anchor::kTop},
    ControlAnchor{IDC_LIST_FAILURE, kLeftRight | anchor::kBottom},
    ControlAnchor{IDOK, anchor::kRight | anchor::kBottom},
    ControlAnchor{IDCANCEL, anchor::kRight | anchor::kBottom},
};

constexpr int kSizeColumnWidth = 90;  // at 96 dots to the inch

void AddColumn(HWND list, int index, const wchar_t* text, int format) {
  LVCOLUMNW column{};
  column.mask = LVCF_TEXT | LVCF_FMT;
  column.fmt = format;
  std::wstring title(text);
  column.pszText = title.data();
  SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(index),
               reinterpret_cast<LPARAM>(&column));
}

}  // namespace

AttachmentsDialog::AttachmentsDialog(EventLoop& loop, FileSystem& files, DialogSize& size,
                                     std::vector<MailForm::File> list)
    : DialogWindow(loop, IDD_ATTACHMENTS, kAnchors, size), list_(std::move(list), files) {
  INITCOMMONCONTROLSEX controls{sizeof controls, ICC_LISTVIEW_CLASSES};
  InitCommonControlsEx(&controls);
}

void AttachmentsDialog::OnOpen() {
  const HWND list = Control(IDC_LIST);
  SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP,
               LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
  AddColumn(list, 0, L"Name", LVCFMT_LEFT);
  AddColumn(list, 1, L"Size", LVCFMT_RIGHT);
  OnResize();
  DragAcceptFiles(Window(), TRUE);
  Fill();
}

int AttachmentsDialog::FirstControl() const {
  return Files().empty() ? IDC_ADD : IDC_LIST;
}

void AttachmentsDialog::OnCommand(int control, int notification) {
  if (notification != BN_CLICKED) return;
  switch (control) {
    case IDC_ADD:
      return AskForFiles();
    case IDC_REMOVE:
      return RemoveSelected();
    case IDC_RENAME:
      return RenameFocused();
    case IDOK:
      return Close(IDOK);
    default:
      return;
  }
}

LRESULT AttachmentsDialog::OnNotify(const NMHDR& header) {
  if (header.idFrom != IDC_LIST) return 0;
  switch (header.code) {
    case LVN_ITEMCHANGED:
      EnableButtons();
      return 0;
    case LVN_KEYDOWN: {
      const auto key = reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey;
      if (key == VK_DELETE) RemoveSelected();
      if (key == VK_F2) RenameFocused();
      return 0;
    }
    case LVN_ENDLABELEDITW:
      return static_cast<LRESULT>(TakeName(reinterpret_cast<const NMLVDISPINFOW&>(header)));
    default:
      return 0;
  }
}

void AttachmentsDialog::OnFilesDropped(const std::vector<std::string>& paths) {
  Add(paths);
}

void AttachmentsDialog::OnResize() {
  const HWND list = Control(IDC_LIST);
  RECT client{};
  GetClientRect(list, &client);
  const int size = Scaled(kSizeColumnWidth);
  const int name = std::max<int>(client.right - size, size);
  SendMessageW(list, LVM_SETCOLUMNWIDTH, 0, MAKELPARAM(name, 0));
  SendMessageW(list, LVM_SETCOLUMNWIDTH, 1, MAKELPARAM(size, 0));
}

// One that cannot be added does not keep the others out.
void AttachmentsDialog::Add(const std::vector<std::string>& paths) {
  std::string failure;
  for (const auto& path : paths) {
    try {
      list_.Add(path);
    } catch (const MailFormFailure& error) {
      failure = error.Text();
    }
  }
  Fill();
  ShowFailure(failure);
}

void AttachmentsDialog::AskForFiles() {
  const auto chosen = ChooseFiles(Window());
  if (!IsOpen()) return;
  if (chosen.tooMany) return ShowFailure("Too many files at once: add them in several steps.");
  if (!chosen.paths.empty()) Add(chosen.paths);
}

void AttachmentsDialog::RemoveSelected() {
  const HWND list = Control(IDC_LIST);
  const auto first = SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED);
  for (auto index = static_cast<LRESULT>(Files().size()) - 1; index >= 0; --index) {
    const auto state =
        SendMessageW(list, LVM_GETITEMSTATE, static_cast<WPARAM>(index), LVIS_SELECTED);
    if (state != 0) list_.Remove(static_cast<std::size_t>(index));
  }
  Fill();
  ShowFailure({});
  if (Files().empty()) return Focus(IDC_ADD);
  LVITEMW item{};
  item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
  const auto last = static_cast<LRESULT>(Files().size()) - 1;
  SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(std::clamp<LRESULT>(first, 0, last)),
               reinterpret_cast<LPARAM>(&item));
}

void AttachmentsDialog::RenameFocused() const {
  const HWND list = Control(IDC_LIST);
  const auto index = SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED);
  if (index < 0) return;
  SetFocus(list);
  SendMessageW(list, LVM_EDITLABELW, static_cast<WPARAM>(index), 0);
}

bool AttachmentsDialog::TakeName(const NMLVDISPINFOW& edited) {
  if (edited.item.pszText == nullptr) return false;  // he has thought better of it
  const bool taken =
      list_.Rename(static_cast<std::size_t>(edited.item.iItem), Utf8FromWide(edited.item.pszText));
  ShowFailure(taken ? std::string() : "A file cannot have this name.");
  return taken;
}

void AttachmentsDialog::Fill() {
  const HWND list = Control(IDC_LIST);
  SendMessageW(list, LVM_DELETEALLITEMS, 0, 0);
  for (std::size_t index = 0; index < Files().size(); ++index) {
    const auto line = list_.LineOf(index);
    auto name = WideFromUtf8(line.name);
    auto size = WideFromUtf8(line.size);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = static_cast<int>(index);
    item.pszText = name.data();
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    item.iSubItem = 1;
    item.pszText = size.data();
    SendMessageW(list, LVM_SETITEMTEXTW, index, reinterpret_cast<LPARAM>(&item));
  }
  EnableButtons();
}

void AttachmentsDialog::EnableButtons() const {
  const auto selected = SendMessageW(Control(IDC_LIST), LVM_GETSELECTEDCOUNT, 0, 0);
  EnableWindow(Control(IDC_REMOVE), selected > 0 ? TRUE : FALSE);
  EnableWindow(Control(IDC_RENAME), selected == 1 ? TRUE : FALSE);
}

void AttachmentsDialog::ShowFailure(const std::string& text) const {
  SetText(IDC_LIST_FAILURE, text);
  ShowWindow(Control(IDC_LIST_FAILURE), text.empty() ? SW_HIDE : SW_SHOW);
  if (!text.empty()) MessageBeep(MB_ICONWARNING);
}

}  // namespace quillon
