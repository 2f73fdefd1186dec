#include <array>
#include <gtest/gtest.h>
#include <stdexcept>

#include "dialogs/win32/DialogWindow.h"
#include "dialogs/win32/DialogWorld.h"
#include "dialogs/win32/resource.h"

namespace quillon::testing {
namespace {

constexpr unsigned kRightBottom = anchor::kRight | anchor::kBottom;
constexpr std::array kAnchors{
    ControlAnchor{IDOK, kRightBottom},
    ControlAnchor{IDC_LIST, anchor::kLeft | anchor::kTop | kRightBottom},
};

class PlainDialog final : public DialogWindow {
 public:
  PlainDialog(EventLoop& loop, DialogSize& size)
      : DialogWindow(loop, IDD_ATTACHMENTS, kAnchors, size) {}

  using DialogWindow::Close;
  using DialogWindow::Control;

  std::vector<int> pressed;
  bool mayCancel = true;
  bool fails = false;

 private:
  int FirstControl() const override { return IDC_ADD; }
  void OnCommand(int control, int notification) override {
    if (fails) throw std::runtime_error("failed");
    if (notification == BN_CLICKED) pressed.push_back(control);
    if (control == IDOK) Close(IDOK);
  }
  bool MayCancel() const override { return mayCancel; }
};

class DialogWindowTest : public ::testing::Test {
 protected:
  static void Key(HWND window, WPARAM key) {
    PostMessageW(window, WM_KEYDOWN, key, 1);
    PostMessageW(window, WM_KEYUP, key, 1);
  }
  static HWND MakeOwner() {
    return CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 300, 200, 200,
                           150, nullptr, nullptr, nullptr, nullptr);
  }
  static Box PlaceOf(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return {place.left, place.top, place.right - place.left, place.bottom - place.top};
  }

  std::unique_ptr<NetworkLoop> loop = MakeNetworkLoop();
  DialogSize size;
  PlainDialog dialog{*loop, size};
};

TEST_F(DialogWindowTest, EveryWayOutFreesTheOwner) {
  const struct {
    const char* name;
    std::function<void()> leave;
    int result;
  } ways[] = {
      {"the button", [&] { Press(dialog.Window(), IDOK); }, IDOK},
      {"Enter", [&] { Key(GetFocus(), VK_RETURN); }, IDOK},
      {"Escape", [&] { Key(GetFocus(), VK_ESCAPE); }, IDCANCEL},
      {"the close box", [&] { SendMessageW(dialog.Window(), WM_CLOSE, 0, 0); }, IDCANCEL},
      {"somebody destroys it", [&] { DestroyWindow(dialog.Window()); }, IDCANCEL},
      {"the process is to end", [] { PostQuitMessage(0); }, IDCANCEL},
  };
  const HWND owner = MakeOwner();
  for (const auto& way : ways) {
    SCOPED_TRACE(way.name);
    bool disabled = false;
    const DialogScript script(*loop, {[&] { disabled = IsWindowEnabled(owner) == FALSE; },
                                      [&] { SetFocus(dialog.Control(IDOK)); }, way.leave});
    EXPECT_EQ(dialog.Run(owner), way.result);
    EXPECT_TRUE(disabled);
    EXPECT_FALSE(dialog.IsOpen());
    EXPECT_NE(IsWindowEnabled(owner), FALSE);
    MSG message{};
    while (PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE) {
    }
  }
  const DialogScript script(*loop, {[&] { DestroyWindow(owner); }});
  EXPECT_EQ(dialog.Run(owner), IDCANCEL);
}

TEST_F(DialogWindowTest, StaysWhileItMayNotBeCancelled) {
  dialog.mayCancel = false;
  bool stayed = false;
  const DialogScript script(
      *loop,
      {[&] { Key(GetFocus(), VK_ESCAPE); }, [&] { SendMessageW(dialog.Window(), WM_CLOSE, 0, 0); },
       [&] { Press(dialog.Window(), IDCANCEL); }, [] {}, [&] { stayed = dialog.IsOpen(); },
       [&] { dialog.Close(IDABORT); }});
  EXPECT_EQ(dialog.Run(nullptr), IDABORT);
  EXPECT_TRUE(stayed);
}

TEST_F(DialogWindowTest, KeysMoveAndPress) {
  const DialogScript script(
      *loop,
      {[&] { Key(GetFocus(), VK_TAB); }, [&] { EXPECT_EQ(GetFocus(), dialog.Control(IDC_REMOVE)); },
       [&] { Key(GetFocus(), VK_SPACE); },
       [&] { PostMessageW(GetFocus(), WM_SYSKEYDOWN, 'A', 0x20000001); }, [] {},
       [&] { dialog.Close(IDOK); }});
  dialog.Run(nullptr);
  EXPECT_EQ(dialog.pressed, (std::vector<int>{IDC_REMOVE, IDC_ADD}));
}

TEST_F(DialogWindowTest, WhatAHandlerThrowsComesOutOfTheLoop) {
  dialog.fails = true;
  const HWND owner = MakeOwner();
  const DialogScript script(*loop, {[&] { Press(dialog.Window(), IDC_ADD); }});
  EXPECT_THROW(dialog.Run(owner), std::runtime_error);
  EXPECT_FALSE(dialog.IsOpen());
  EXPECT_NE(IsWindowEnabled(owner), FALSE);
  DestroyWindow(owner);
}

TEST_F(DialogWindowTest, ControlsFollowTheSizeWhichIsKept) {
  Box before;
  Box after;
  Box list;
  {
    const DialogScript script(*loop, {[&] {
                                        before = PlaceOf(dialog.Control(IDOK));
                                        list = PlaceOf(dialog.Control(IDC_LIST));
                                        const Box frame = PlaceOf(dialog.Window());
                                        SetWindowPos(dialog.Window(), nullptr, frame.left,
                                                     frame.top, frame.width + 60, frame.height + 40,
                                                     SWP_NOZORDER);
                                        after = PlaceOf(dialog.Control(IDOK));
                                        list.width -= PlaceOf(dialog.Control(IDC_LIST)).width;
                                      },
                                      [&] { dialog.Close(IDOK); }});
    dialog.Run(nullptr);
  }
  EXPECT_EQ(after, (Box{before.left + 60, before.top + 40, before.width, before.height}));
  EXPECT_EQ(list.width, -60);
  const DialogScript script(*loop, {[&] {
                                      RECT client{};
                                      GetClientRect(dialog.Window(), &client);
                                      EXPECT_EQ(client.right, size->width);
                                    },
                                    [&] { dialog.Close(IDOK); }});
  ASSERT_TRUE(size.has_value());
  dialog.Run(nullptr);
}

TEST_F(DialogWindowTest, ScalesWithTheResolutionOfItsMonitor) {
  Box before;
  Box after;
  std::vector<std::string> cut;
  const DialogScript script(*loop, {[&] {
                                      before = PlaceOf(dialog.Control(IDC_LIST));
                                      const Box frame = PlaceOf(dialog.Window());
                                      RECT larger{0, 0, frame.width * 2, frame.height * 2};
                                      SendMessageW(dialog.Window(), WM_DPICHANGED,
                                                   MAKEWPARAM(192, 192),
                                                   reinterpret_cast<LPARAM>(&larger));
                                      after = PlaceOf(dialog.Control(IDC_LIST));
                                      cut = TextsThatDoNotFit(dialog.Window());
                                    },
                                    [&] { dialog.Close(IDOK); }});
  dialog.Run(nullptr);
  EXPECT_GE(after.width, before.width * 2);
  EXPECT_GE(after.height, before.height * 2);
  EXPECT_EQ(cut, std::vector<std::string>{});
}

}  // namespace
}  // namespace quillon::testing
