#include <windows.h>
#include <commctrl.h>
#include <gtest/gtest.h>
#include <shellapi.h>
#include <shlobj.h>

#include "dialogs/MailForm.h"
#include "dialogs/win32/AttachmentsDialog.h"
#include "dialogs/win32/DialogWorld.h"
#include "dialogs/win32/SendDialog.h"
#include "dialogs/win32/resource.h"
#include "ports/FileSystem.h"
#include "support/TempFolder.h"

namespace quillon::testing {
namespace {

// A right-to-left word, an astral character, half of one.
constexpr const char* kStrange = "\xD7\xA9\xD7\x9C \xF0\x9F\x93\xA7 \xED\xA0\xBD";

class RecordingHost final : public MailDialogHost {
 public:
  MailFailure Send(const MailForm& form, std::int32_t) override {
    sent.push_back(form);
    if (during) during();
    return failure;
  }
  bool HasAddressBook() override { return hasBook; }
  MailFailure ChooseAddresses(MailForm& form, std::int32_t) override {
    form.bcc = "chosen@x";
    return {};
  }

  MailFailure failure;
  std::function<void()> during;
  bool hasBook = false;
  std::vector<MailForm> sent;
};

class SendDialogTest : public ::testing::Test {
 protected:
  // Works through the steps in a dialog with `form`; what Run returns.
  std::optional<int> Use(std::vector<std::function<void()>> steps) {
    SendDialog shown(*loop, *files, sizes, "Caption", form, host);
    dialog = &shown;
    const DialogScript script(*loop, std::move(steps));
    const auto result = shown.Run(nullptr);
    EXPECT_TRUE(script.Done());
    wasSent = shown.Sent();
    dialog = nullptr;
    return result;
  }
  HWND Of(int control) const { return GetDlgItem(dialog->Window(), control); }
  void Type(int control, const std::string& text) const {
    SetWindowTextW(Of(control), WideFromUtf8(text).c_str());
  }
  std::string TextOf(int control) const {
    std::wstring text(200, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(Of(control), text.data(), 200)));
    return Utf8FromWide(text);
  }
  std::string MakeFile(const std::string& name) {
    auto path = folder.Path(name);
    files->Open(path, OpenMode::kCreate);
    return path;
  }
  static void Drop(HWND window, const std::string& path) {
    const auto name = WideFromUtf8(path);
    const std::size_t bytes = (name.size() + 2) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GHND, sizeof(DROPFILES) + bytes);
    auto* const drop = static_cast<DROPFILES*>(GlobalLock(memory));
    drop->pFiles = sizeof(DROPFILES);
    drop->fWide = TRUE;
    std::copy(name.begin(), name.end(), reinterpret_cast<wchar_t*>(drop + 1));
    GlobalUnlock(memory);
    SendMessageW(window, WM_DROPFILES, reinterpret_cast<WPARAM>(memory), 0);
  }

  TempFolder folder;
  std::unique_ptr<NetworkLoop> loop = MakeNetworkLoop();
  std::unique_ptr<FileSystem> files = MakeFileSystem();
  MailDialogSizes sizes;
  RecordingHost host;
  MailForm form;
  SendDialog* dialog = nullptr;
  bool wasSent = false;
};

TEST_F(SendDialogTest, GivesBackWhatItWasFilledWith) {
  form = {kStrange, "c", "b", std::string("s\0t", 3), "one\r\ntwo", {{"p", "n"}}, 4, true};
  EXPECT_EQ(Use({[&] { Press(dialog->Window(), IDOK); }}), IDOK);
  EXPECT_TRUE(wasSent);
  ASSERT_EQ(host.sent.size(), 1U);
  const auto& sent = host.sent[0];
  EXPECT_EQ(sent.to, form.to);
  EXPECT_EQ(sent.subject, form.subject);
  EXPECT_EQ(sent.text, form.text);
  EXPECT_EQ(sent.importance, 4);
  EXPECT_TRUE(sent.receipt);
  EXPECT_EQ(sent.files.size(), 1U);
}

TEST_F(SendDialogTest, TakesWhatIsPutInHoweverLong) {
  const std::string line(150000, 'x');
  std::string lines;
  while (lines.size() < line.size()) lines += "One line of a long text.\r\n";
  const std::pair<int, const std::string*> texts[] = {
      {IDC_TO, &line}, {IDC_SUBJECT, &line}, {IDC_TEXT, &lines}};
  host.hasBook = true;
  Use({[&] {
         for (const auto& [control, text] : texts) {
           SendMessageW(Of(control), EM_REPLACESEL, TRUE,
                        reinterpret_cast<LPARAM>(WideFromUtf8(*text).c_str()));
         }
         Type(IDC_CC, kStrange);
         SendMessageW(Of(IDC_IMPORTANCE), CB_SETCURSEL, 0, 0);
         Press(dialog->Window(), IDC_RECEIPT);
         Press(dialog->Window(), IDC_ADDRESSES);
       },
       [] {}, [&] { Press(dialog->Window(), IDOK); }});
  ASSERT_EQ(host.sent.size(), 1U);
  const auto& sent = host.sent[0];
  EXPECT_EQ(sent.to, line);
  EXPECT_EQ(sent.subject, line);
  EXPECT_EQ(sent.text, lines);
  EXPECT_EQ(sent.cc, kStrange);
  EXPECT_EQ(sent.bcc, "chosen@x");
  EXPECT_EQ(sent.importance, 1);
  EXPECT_TRUE(sent.receipt);
}

TEST_F(SendDialogTest, AFailureIsShownAndNothingIsLost) {
  host.failure = {"Nobody there.", MailField::Cc};
  bool closable = true;
  host.during = [&] {
    EXPECT_FALSE(IsWindowEnabled(Of(IDC_TO)));
    EXPECT_FALSE(IsWindowEnabled(Of(IDOK)));
    SendMessageW(dialog->Window(), WM_CLOSE, 0, 0);
    closable = !dialog->IsOpen();
  };
  EXPECT_EQ(Use({[&] {
                   Type(IDC_TO, "a@x");
                   Press(dialog->Window(), IDOK);
                 },
                 [] {},
                 [&] {
                   EXPECT_EQ(TextOf(IDC_FAILURE), "Nobody there.");
                   EXPECT_TRUE(IsWindowVisible(Of(IDC_FAILURE_ICON)));
                   EXPECT_EQ(GetFocus(), Of(IDC_CC));
                   EXPECT_EQ(TextOf(IDC_TO), "a@x");
                   EXPECT_TRUE(IsWindowEnabled(Of(IDOK)));
                   EXPECT_FALSE(IsWindowEnabled(Of(IDC_ADDRESSES)));
                   SendMessageW(dialog->Window(), WM_CLOSE, 0, 0);
                 }}),
            IDCANCEL);
  EXPECT_FALSE(closable);
  EXPECT_FALSE(wasSent);
}

TEST_F(SendDialogTest, AMessageThatHasLeftIsSentAlsoWithoutTheWindow) {
  host.during = [&] { DestroyWindow(dialog->Window()); };
  Use({[&] { Press(dialog->Window(), IDOK); }});
  EXPECT_TRUE(wasSent);
}

TEST_F(SendDialogTest, FilesAreDroppedOnIt) {
  Use({[&] { Drop(dialog->Window(), MakeFile("a.txt")); },
       [&] {
         EXPECT_EQ(TextOf(IDC_FILES), "a.txt");
         Drop(dialog->Window(), folder.Path("missing"));
         EXPECT_EQ(TextOf(IDC_FILES), "a.txt");
         EXPECT_NE(TextOf(IDC_FAILURE).find("does not exist"), std::string::npos);
         SendMessageW(dialog->Window(), WM_CLOSE, 0, 0);
       }});
}

TEST_F(SendDialogTest, FilesAreRemovedAndRenamedInTheirDialog) {
  form.files = {{MakeFile("a.txt"), "a.txt"}, {MakeFile("b.txt"), "b.txt"}};
  const auto list = [] { return GetDlgItem(FindDialog(L"Attachments"), IDC_LIST); };
  const auto choose = [&](WPARAM index) {
    LVITEMW item{};
    item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(list(), LVM_SETITEMSTATE, index, reinterpret_cast<LPARAM>(&item));
  };
  const auto key = [&](WPARAM code) { SendMessageW(list(), WM_KEYDOWN, code, 1); };
  const auto edit = [&] {
    return reinterpret_cast<HWND>(SendMessageW(list(), LVM_GETEDITCONTROL, 0, 0));
  };
  Use({[&] { Press(dialog->Window(), IDC_ATTACHMENTS); }, [] {}, [] {},
       [&] {
         ASSERT_NE(list(), nullptr);
         EXPECT_FALSE(IsWindowEnabled(dialog->Window()));
         EXPECT_EQ(TextsThatDoNotFit(FindDialog(L"Attachments")), std::vector<std::string>{});
         choose(0);
         key(VK_DELETE);
         key(VK_F2);
         ASSERT_NE(edit(), nullptr);
         SetWindowTextW(edit(), L"new name.txt");
         SendMessageW(edit(), WM_KEYDOWN, VK_RETURN, 1);
         Press(FindDialog(L"Attachments"), IDOK);
       },
       [] {}, [] {},
       [&] {
         EXPECT_EQ(TextOf(IDC_FILES), "new name.txt");
         Press(dialog->Window(), IDOK);
       }});
  ASSERT_EQ(host.sent.size(), 1U);
  ASSERT_EQ(host.sent[0].files.size(), 1U);
  EXPECT_EQ(host.sent[0].files[0].path, form.files[1].path);
  EXPECT_EQ(host.sent[0].files[0].name, "new name.txt");
}

TEST_F(SendDialogTest, EveryTextFits) {
  Use({[&] {
    EXPECT_EQ(TextsThatDoNotFit(dialog->Window()), std::vector<std::string>{});
    SendMessageW(dialog->Window(), WM_CLOSE, 0, 0);
  }});
}

}  // namespace
}  // namespace quillon::testing
