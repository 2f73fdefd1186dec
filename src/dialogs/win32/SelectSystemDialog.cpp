#include "dialogs/win32/SelectSystemDialog.h"

#include <windows.h>
#include <commctrl.h>

#include "dialogs/win32/OpenWindow.h"
#include "dialogs/win32/resource.h"
#include "platform/win32/WideText.h"

namespace quillon {
namespace {

constexpr unsigned kAllEdges = anchor::kLeft | anchor::kTop | anchor::kRight | anchor::kBottom;
constexpr ControlAnchor kAnchors[] = {
    {IDC_SYSTEMS, kAllEdges},
    {IDOK, anchor::kRight | anchor::kBottom},
    {IDCANCEL, anchor::kRight | anchor::kBottom},
};

enum Column { kName, kReason };

}  // namespace

// A line that cannot be taken is grey, but can be gone to, so that its reason is read aloud.
class SelectSystemDialog::Window final : public DialogWindow {
 public:
  Window(EventLoop& loop, DialogSize& size, const std::string& caption,
         const std::vector<MailSystemChoice>& choices, std::optional<std::size_t>& selected)
      : DialogWindow(loop, IDD_SELECT_SYSTEM, kAnchors, size),
        caption_(caption),
        choices_(choices),
        selected_(selected) {
    INITCOMMONCONTROLSEX controls{sizeof controls, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&controls);
  }

 protected:
  void OnOpen() override {
    SetWindowTextW(DialogWindow::Window(), WideFromUtf8(caption_).c_str());
    const HWND list = List();
    ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
    LVCOLUMNW column{};
    for (const int number : {kName, kReason}) ListView_InsertColumn(list, number, &column);
    for (std::size_t i = 0; i < choices_.size(); ++i) AddLine(static_cast<int>(i));
    ListView_SetColumnWidth(list, kName, LVSCW_AUTOSIZE);
    FitReasons();
    if (selected_) GoTo(static_cast<int>(*selected_));
    MayTake();
  }

  int FirstControl() const override { return IDC_SYSTEMS; }

  void OnCommand(int control, int /*notification*/) override {
    if (control != IDOK || !MayTake()) return;
    selected_ = static_cast<std::size_t>(Current());
    Close(IDOK);
  }

  LRESULT OnNotify(const NMHDR& header) override {
    if (header.idFrom != IDC_SYSTEMS) return 0;
    switch (header.code) {
      case LVN_ITEMCHANGED:
        MayTake();
        return 0;
      case NM_DBLCLK:
        PostMessageW(DialogWindow::Window(), WM_COMMAND, IDOK,
                     reinterpret_cast<LPARAM>(Control(IDOK)));
        return 0;
      case NM_CUSTOMDRAW:
        return Draw(const_cast<NMLVCUSTOMDRAW&>(reinterpret_cast<const NMLVCUSTOMDRAW&>(header)));
      default:
        return 0;
    }
  }

  void OnResize() override { FitReasons(); }

 private:
  HWND List() const { return Control(IDC_SYSTEMS); }
  int Current() const { return ListView_GetNextItem(List(), -1, LVNI_SELECTED); }

  void AddLine(int line) {
    const auto& choice = choices_[static_cast<std::size_t>(line)];
    std::wstring name = WideFromUtf8(choice.name);
    std::wstring reason = WideFromUtf8(choice.reason);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = line;
    item.pszText = name.data();
    ListView_InsertItem(List(), &item);
    ListView_SetItemText(List(), line, kReason, reason.data());
  }

  void GoTo(int line) {
    constexpr UINT kHere = LVIS_SELECTED | LVIS_FOCUSED;
    ListView_SetItemState(List(), line, kHere, kHere);
    ListView_EnsureVisible(List(), line, FALSE);
  }

  // What the names leave of the list.
  void FitReasons() { ListView_SetColumnWidth(List(), kReason, LVSCW_AUTOSIZE_USEHEADER); }

  // OK can be pressed where the line can be taken.
  bool MayTake() {
    const int line = Current();
    const bool may = line >= 0 && choices_[static_cast<std::size_t>(line)].reason.empty();
    EnableWindow(Control(IDOK), may ? TRUE : FALSE);
    return may;
  }

  LRESULT Draw(NMLVCUSTOMDRAW& draw) const {
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT) return CDRF_DODEFAULT;
    const std::size_t line = draw.nmcd.dwItemSpec;
    if (line < choices_.size() && !choices_[line].reason.empty()) {
      draw.clrText = GetSysColor(COLOR_GRAYTEXT);
    }
    return CDRF_NEWFONT;
  }

  const std::string& caption_;
  const std::vector<MailSystemChoice>& choices_;
  std::optional<std::size_t>& selected_;
};

MailSystemDialog::Answer SelectSystemDialog::Show(const std::string& caption, std::int32_t owner,
                                                  const std::vector<MailSystemChoice>& choices,
                                                  std::optional<std::size_t>& selected) {
  Window window(loop_, size_, caption, choices, selected);
  const OpenWindow only(open_, window);
  const auto result = window.Run(WindowOf(owner));
  if (!result) return Answer::Unavailable;
  return *result == IDOK ? Answer::Selected : Answer::Cancelled;
}

}  // namespace quillon
