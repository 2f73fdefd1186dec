#include "dialogs/win32/SendDialog.h"

#include <algorithm>
#include <shellapi.h>
#include <utility>

#include "dialogs/FileList.h"
#include "dialogs/MailForm.h"
#include "dialogs/win32/AttachmentsDialog.h"
#include "dialogs/win32/resource.h"
#include "platform/win32/WideText.h"

namespace quillon {
namespace {

constexpr unsigned kLeftRight = anchor::kLeft | anchor::kRight;
constexpr unsigned kLeftBottom = anchor::kLeft | anchor::kBottom;
constexpr unsigned kRightBottom = anchor::kRight | anchor::kBottom;
constexpr std::array kAnchors{
    ControlAnchor{IDC_TO, kLeftRight | anchor::kTop},
    ControlAnchor{IDC_CC, kLeftRight | anchor::kTop},
    ControlAnchor{IDC_BCC, kLeftRight | anchor::kTop},
    ControlAnchor{IDC_ADDRESSES, anchor::kRight | anchor::kTop},
    ControlAnchor{IDC_SUBJECT, kLeftRight | anchor::kTop},
    ControlAnchor{IDC_TEXT, kLeftRight | anchor::kTop | anchor::kBottom},
    ControlAnchor{IDC_ATTACHMENTS, kLeftBottom},
    ControlAnchor{IDC_FILES, kLeftRight | anchor::kBottom},
    ControlAnchor{IDC_IMPORTANCE_LABEL, kLeftBottom},
    ControlAnchor{IDC_IMPORTANCE, kLeftBottom},
    ControlAnchor{IDC_RECEIPT, kLeftBottom},
    ControlAnchor{IDC_FAILURE_ICON, kLeftBottom},
    ControlAnchor{IDC_FAILURE, kLeftRight | anchor::kBottom},
    ControlAnchor{IDOK, kRightBottom},
    ControlAnchor{IDCANCEL, kRightBottom},
};

// From the importance 1 on.
constexpr std::array kImportances{L"Highest", L"High", L"Normal", L"Low", L"Lowest"};

constexpr LPARAM kNoLimit = 0x7FFFFFFE;

std::int32_t HandleOf(HWND window) {
  return static_cast<std::int32_t>(reinterpret_cast<INT_PTR>(window));
}

// What an edit control cannot show in its height can be scrolled to.
void ShowScrollBarIfNeeded(HWND edit) {
  RECT room{};
  SendMessageW(edit, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&room));
  const HDC device = GetDC(edit);
  auto* const font = reinterpret_cast<HGDIOBJ>(SendMessageW(edit, WM_GETFONT, 0, 0));
  const HGDIOBJ previous = SelectObject(device, font);
  TEXTMETRICW letters{};
  GetTextMetricsW(device, &letters);
  SelectObject(device, previous);
  ReleaseDC(edit, device);
  const auto lines = SendMessageW(edit, EM_GETLINECOUNT, 0, 0);
  ShowScrollBar(edit, SB_VERT, lines * letters.tmHeight > room.bottom - room.top ? TRUE : FALSE);
}

int ControlOf(MailField field) {
  switch (field) {
    case MailField::To:
      return IDC_TO;
    case MailField::Cc:
      return IDC_CC;
    case MailField::Bcc:
      return IDC_BCC;
    case MailField::Files:
      return IDC_ATTACHMENTS;
    case MailField::None:
      break;
  }
  return IDOK;
}

}  // namespace

SendDialog::SendDialog(EventLoop& loop, FileSystem& files, MailDialogSizes& sizes,
                       std::string caption, MailForm form, MailDialogHost& host)
    : DialogWindow(loop, IDD_SEND, kAnchors, sizes.send),
      files_(files),
      sizes_(sizes),
      caption_(std::move(caption)),
      form_(std::move(form)),
      host_(host),
      fields_{Field{IDC_TO, &MailForm::to, {}}, Field{IDC_CC, &MailForm::cc, {}},
              Field{IDC_BCC, &MailForm::bcc, {}}, Field{IDC_SUBJECT, &MailForm::subject, {}},
              Field{IDC_TEXT, &MailForm::text, {}}} {}

void SendDialog::OnOpen() {
  SetWindowTextW(Window(), WideFromUtf8(caption_).c_str());
  const HWND importance = Control(IDC_IMPORTANCE);
  for (const auto* const name : kImportances) {
    SendMessageW(importance, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
  }
  for (const auto& field : fields_) {
    SendMessageW(Control(field.control), EM_SETLIMITTEXT, kNoLimit, 0);
  }
  EnableWindow(Control(IDC_ADDRESSES), host_.HasAddressBook() ? TRUE : FALSE);
  DragAcceptFiles(Window(), TRUE);
  Fill();
}

// The first one that is still to be written.
int SendDialog::FirstControl() const {
  if (form_.to.empty() && form_.cc.empty() && form_.bcc.empty()) return IDC_TO;
  return form_.subject.empty() ? IDC_SUBJECT : IDC_TEXT;
}

void SendDialog::Fill() {
  for (auto& field : fields_) {
    SetText(field.control, form_.*field.text);
    field.shown = Text(field.control);
  }
  SendMessageW(Control(IDC_IMPORTANCE), CB_SETCURSEL,
               static_cast<WPARAM>(std::clamp<int>(form_.importance - 1, 0, 4)), 0);
  SendMessageW(Control(IDC_RECEIPT), BM_SETCHECK, form_.receipt ? BST_CHECKED : BST_UNCHECKED, 0);
  ShowFiles();
}

// A control does not show everything that a text may hold: what has not been changed in it stays.
void SendDialog::Read() {
  for (auto& field : fields_) {
    auto text = Text(field.control);
    if (text == field.shown) continue;
    field.shown = text;
    form_.*field.text = std::move(text);
  }
  const auto chosen = SendMessageW(Control(IDC_IMPORTANCE), CB_GETCURSEL, 0, 0);
  if (chosen >= 0) form_.importance = static_cast<std::int16_t>(chosen + 1);
  form_.receipt = SendMessageW(Control(IDC_RECEIPT), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void SendDialog::ShowFiles() const {
  SetText(IDC_FILES, FilesText(form_.files));
}

void SendDialog::OnCommand(int control, int notification) {
  if (control == IDC_TEXT) return OnText(notification);
  if (notification != BN_CLICKED || busy_) return;
  switch (control) {
    case IDOK:
      return Send();
    case IDC_ADDRESSES:
      return ChooseAddresses();
    case IDC_ATTACHMENTS:
      return EditFiles();
    default:
      return;
  }
}

// The dialog manager selects everything in a text that gets the keyboard, and the next key would
// replace it. The mouse says itself where it wants to be.
void SendDialog::OnText(int notification) {
  const HWND text = Control(IDC_TEXT);
  if (notification == EN_KILLFOCUS) {
    SendMessageW(text, EM_GETSEL, reinterpret_cast<WPARAM>(&selection_.first),
                 reinterpret_cast<LPARAM>(&selection_.second));
  } else if (notification == EN_SETFOCUS && GetKeyState(VK_LBUTTON) >= 0) {
    PostMessageW(text, EM_SETSEL, selection_.first, static_cast<LPARAM>(selection_.second));
  }
}

// Enter makes a line in the text, so there is another key to send with.
bool SendDialog::OnKey(const MSG& message) {
  const bool sends =
      message.message == WM_KEYDOWN && message.wParam == VK_RETURN && GetKeyState(VK_CONTROL) < 0;
  if (sends) PostMessageW(Window(), WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
  return sends;
}

void SendDialog::OnFilesDropped(const std::vector<std::string>& paths) {
  if (busy_) return;
  FileList list(form_.files, files_);
  MailFailure failure;
  for (const auto& path : paths) {
    try {
      list.Add(path);
    } catch (const MailFormFailure& error) {
      failure = {error.Text(), error.Field()};
    }
  }
  form_.files = list.Files();
  ShowFiles();
  if (failure.text.empty()) return ShowMessage({}, false);
  Fail(failure);
}

template <class Call>
MailFailure SendDialog::Ask(Call&& call) {
  Read();
  const HWND focus = GetFocus();
  busy_ = true;
  EnableControls(false);
  struct Working {
    SendDialog& dialog;
    HWND focus;
    ~Working() {
      dialog.busy_ = false;
      if (!dialog.IsOpen()) return;
      dialog.EnableControls(true);
      if (GetForegroundWindow() == dialog.Window() || GetActiveWindow() == dialog.Window()) {
        SetFocus(focus);
      }
    }
  } const working{*this, focus};
  return std::forward<Call>(call)();
}

void SendDialog::Send() {
  ShowMessage("Sending...", false);
  const auto failure = Ask([this] { return host_.Send(form_, HandleOf(Window())); });
  sent_ = failure.text.empty();
  if (sent_) return Close(IDOK);
  if (IsOpen()) Fail(failure);
}

void SendDialog::ChooseAddresses() {
  ShowMessage({}, false);
  const auto failure = Ask([this] { return host_.ChooseAddresses(form_, HandleOf(Window())); });
  if (!IsOpen()) return;
  Fill();
  if (!failure.text.empty()) Fail(failure);
}

void SendDialog::EditFiles() {
  AttachmentsDialog dialog(Loop(), files_, sizes_.attachments, form_.files);
  const bool changed = dialog.Run(Window()) == IDOK;
  if (!IsOpen()) return;
  if (changed) form_.files = dialog.Files();
  ShowFiles();
  if (changed) ShowMessage({}, false);
}

void SendDialog::EnableControls(bool on) const {
  for (HWND control = GetWindow(Window(), GW_CHILD); control != nullptr;
       control = GetWindow(control, GW_HWNDNEXT)) {
    if ((GetWindowLongW(control, GWL_STYLE) & WS_TABSTOP) == 0) continue;
    const bool usable = on && (GetDlgCtrlID(control) != IDC_ADDRESSES || host_.HasAddressBook());
    EnableWindow(control, usable ? TRUE : FALSE);
  }
}

void SendDialog::ShowMessage(const std::string& text, bool isFailure) const {
  const HWND message = Control(IDC_FAILURE);
  SetText(IDC_FAILURE, text);
  ShowWindow(message, text.empty() ? SW_HIDE : SW_SHOW);
  ShowWindow(Control(IDC_FAILURE_ICON), isFailure ? SW_SHOW : SW_HIDE);
  if (!text.empty()) ShowScrollBarIfNeeded(message);
}

// For those who do not see it too.
void SendDialog::Fail(const MailFailure& failure) const {
  SendMessageW(Control(IDC_FAILURE_ICON), STM_SETICON,
               reinterpret_cast<WPARAM>(LoadIconW(nullptr, IDI_WARNING)), 0);
  ShowMessage(failure.text, true);
  MessageBeep(MB_ICONWARNING);
  NotifyWinEvent(EVENT_SYSTEM_ALERT, Control(IDC_FAILURE), OBJID_CLIENT, CHILDID_SELF);
  Focus(ControlOf(failure.field));
}

}  // namespace quillon
