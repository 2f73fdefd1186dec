// The dialogs that ask for one thing: login data, a mail system.
#include <windows.h>
#include <commctrl.h>
#include <gtest/gtest.h>

#include "dialogs/MailSystemList.h"
#include "dialogs/win32/DialogWorld.h"
#include "dialogs/win32/LoginDialog.h"
#include "dialogs/win32/SelectSystemDialog.h"
#include "dialogs/win32/resource.h"
#include "mail/BusyGate.h"

namespace quillon::testing {
namespace {

using Texts = std::vector<std::string>;

class QuestionDialogsTest : public ::testing::Test {
 protected:
  static HWND Open() { return FindDialog(WideFromUtf8(kCaption)); }
  static void Put(int control, const wchar_t* text) { SetDlgItemTextW(Open(), control, text); }

  static constexpr const char* kCaption = "ActiveMessaging Login";
  std::unique_ptr<NetworkLoop> loop = MakeNetworkLoop();
  BusyGate busy;
  LoginDialog login{*loop, busy};
  SelectSystemDialog select{*loop};
};

TEST_F(QuestionDialogsTest, AsksForWhatTheMailSystemNeeds) {
  const struct {
    LoginQuestion question;
    int first;  // the field that has the keyboard
    LoginFields entered;
  } cases[] = {
      {{kCaption, 0, "POP3 &server:", "User &name:", "&Password:"}, IDC_NAME, {"S", "N", " P "}},
      {{kCaption, 0, "SMTP &server:", "Your &address:", ""}, IDC_NAME, {"S", "N", "kept"}},
      {{kCaption, 0, "", "Profile &name:", "&Password:"}, IDC_NAME, {"server", "N", " P "}},
      {{kCaption, 0, "", "User &name:", ""}, IDC_NAME, {"server", "N", "kept"}},
  };
  for (const auto& [question, first, entered] : cases) {
    SCOPED_TRACE(question.server + question.name + question.password);
    LoginFields fields{"server", "", "kept"};
    Texts cut{"never looked"};
    int focus = 0;
    const DialogScript script(*loop, {[&] {
                                        cut = TextsThatDoNotFit(Open());
                                        focus = GetDlgCtrlID(GetFocus());
                                        Put(IDC_SERVER, L" S ");
                                        Put(IDC_NAME, L" N ");
                                        Put(IDC_PASSWORD, L" P ");
                                      },
                                      [] { Press(Open(), IDOK); }});
    EXPECT_EQ(login.Ask(question, fields), LoginPrompt::Answer::Entered);
    EXPECT_EQ(cut, Texts{});
    EXPECT_EQ(focus, first);
    EXPECT_EQ((Texts{fields.server, fields.name, fields.password}),
              (Texts{entered.server, entered.name, entered.password}));
  }
}

TEST_F(QuestionDialogsTest, AFieldTakesWhateverIsPasted) {
  constexpr std::size_t kLong = 100'000;
  LoginFields fields;
  const DialogScript script(*loop, {[&] {
                                      const std::wstring text(kLong, L'x');
                                      SendDlgItemMessageW(Open(), IDC_NAME, EM_REPLACESEL, FALSE,
                                                          reinterpret_cast<LPARAM>(text.c_str()));
                                    },
                                    [] { Press(Open(), IDOK); }});
  EXPECT_EQ(login.Ask({kCaption, 0, "", "User &name:", ""}, fields), LoginPrompt::Answer::Entered);
  EXPECT_EQ(fields.name.size(), kLong);
}

TEST_F(QuestionDialogsTest, ASecondOneIsToldToTryAgain) {
  const BusyGate::Hold alone(busy, true);
  LoginFields fields{"server", "name", "password"};
  const LoginQuestion question{kCaption, 0, "", "User &name:", "&Password:"};
  bool refused = false;
  const DialogScript script(*loop, {[&] {
                                      EXPECT_FALSE(busy.Shut());
                                      LoginFields others;
                                      try {
                                        login.Ask(question, others);
                                      } catch (const MailSystemBusy&) {
                                        refused = true;
                                      }
                                      Put(IDC_NAME, L"changed");
                                    },
                                    [] { Press(Open(), IDCANCEL); }});
  EXPECT_EQ(login.Ask(question, fields), LoginPrompt::Answer::Cancelled);
  EXPECT_TRUE(refused);
  EXPECT_EQ(fields.name, "name");
  EXPECT_TRUE(busy.Shut());
}

TEST_F(QuestionDialogsTest, OnlyWhatIsPresentIsTaken) {
  const MailSystemList list([](MailSystemId system) { return system != mail_system::kNotes; });
  std::optional<std::size_t> selected = 1;
  Texts cut{"never looked"};
  std::vector<bool> enabled;
  const auto go = [](int line) {
    ListView_SetItemState(GetDlgItem(Open(), IDC_SYSTEMS), line, LVIS_SELECTED, LVIS_SELECTED);
  };
  const auto look = [&] {
    enabled.push_back(IsWindowEnabled(GetDlgItem(Open(), IDOK)) != FALSE);
    Press(Open(), IDOK);
  };
  const DialogScript script(*loop, {[&] {
                                      cut = TextsThatDoNotFit(Open());
                                      go(6);
                                    },
                                    look, [&] { go(2); }, look});
  EXPECT_EQ(select.Show(kCaption, 0, list.Choices(), selected), MailSystemDialog::Answer::Selected);
  EXPECT_EQ(cut, Texts{});
  EXPECT_EQ(enabled, (std::vector<bool>{false, true}));
  EXPECT_EQ(selected, 2U);
}

}  // namespace
}  // namespace quillon::testing
