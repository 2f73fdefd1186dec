#include "dialogs/win32/LoginDialog.h"

#include "core/Text.h"
#include "dialogs/win32/OpenWindow.h"
#include "dialogs/win32/resource.h"
#include "platform/win32/WideText.h"

namespace quillon {
namespace {

struct Field {
  std::string LoginQuestion::*label;
  std::string LoginFields::*text;
  int labelControl;
  int control;
};

constexpr Field kFields[] = {
    {&LoginQuestion::server, &LoginFields::server, IDC_SERVER_LABEL, IDC_SERVER},
    {&LoginQuestion::name, &LoginFields::name, IDC_NAME_LABEL, IDC_NAME},
    {&LoginQuestion::password, &LoginFields::password, IDC_PASSWORD_LABEL, IDC_PASSWORD},
};

// The templates differ in the fields they have.
int TemplateFor(const LoginQuestion& question) {
  if (question.server.empty()) return question.password.empty() ? IDD_LOGIN_NAME : IDD_LOGIN_LOCAL;
  return question.password.empty() ? IDD_LOGIN_OPEN : IDD_LOGIN;
}

}  // namespace

class LoginDialog::Window final : public DialogWindow {
 public:
  Window(EventLoop& loop, DialogSize& size, const LoginQuestion& question, LoginFields& fields)
      : DialogWindow(loop, TemplateFor(question), {}, size), question_(question), fields_(fields) {}

 protected:
  void OnOpen() override {
    SetWindowTextW(DialogWindow::Window(), WideFromUtf8(question_.caption).c_str());
    for (const auto& field : kFields) {
      const HWND control = Control(field.control);
      if (control == nullptr) continue;
      SendMessageW(control, EM_SETLIMITTEXT, 0, 0);  // as much as there is memory
      SetText(field.labelControl, question_.*field.label);
      SetText(field.control, fields_.*field.text);
    }
  }

  // The first one that is not filled in yet.
  int FirstControl() const override {
    int first = 0;
    for (const auto& field : kFields) {
      if (Control(field.control) == nullptr) continue;
      if ((fields_.*field.text).empty()) return field.control;
      if (first == 0) first = field.control;
    }
    return first;
  }

  void OnCommand(int control, int /*notification*/) override {
    if (control != IDOK) return;
    for (const auto& field : kFields) {
      if (Control(field.control) == nullptr) continue;
      auto text = Text(field.control);
      const bool isPassword = field.control == IDC_PASSWORD;
      fields_.*field.text = isPassword ? std::move(text) : TrimmedCopy(text);
    }
    Close(IDOK);
  }

 private:
  const LoginQuestion& question_;
  LoginFields& fields_;
};

LoginPrompt::Answer LoginDialog::Ask(const LoginQuestion& question, LoginFields& fields) {
  Window window(loop_, size_, question, fields);
  const OpenWindow only(open_, window);
  const BusyGate::Pause pause(busy_);
  const auto result = window.Run(WindowOf(question.owner));
  if (!result) return Answer::Unavailable;
  return *result == IDOK ? Answer::Entered : Answer::Cancelled;
}

}  // namespace quillon
