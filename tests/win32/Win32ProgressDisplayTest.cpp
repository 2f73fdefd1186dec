#include <windows.h>
#include <commctrl.h>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/Platform.h"
#include "platform/win32/WideText.h"
#include "platform/win32/Win32ProgressDisplay.h"

namespace quillon::testing {
namespace {

using Line = ProgressDisplay::Line;

constexpr std::int16_t kAll =
    ProgressDisplay::kBar | ProgressDisplay::kText | ProgressDisplay::kAbortButton;

class Win32ProgressDisplayTest : public ::testing::Test {
 protected:
  static HWND Frame() { return FindWindowW(L"QuillonProgress", nullptr); }
  static HWND Control(const wchar_t* windowClass) {
    return FindWindowExW(Frame(), nullptr, windowClass, nullptr);
  }
  static std::string Text(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), 100)));
    return Utf8FromWide(text);
  }
  static LRESULT Position() { return SendMessageW(Control(PROGRESS_CLASSW), PBM_GETPOS, 0, 0); }

  void Show(std::int16_t parts = kAll) {
    display.Show("Sending Mail", parts, [this] { ++aborts; });
  }

  std::unique_ptr<NetworkLoop> loop = MakeNetworkLoop();
  Win32ProgressDisplay display{*loop};
  int aborts = 0;
};

TEST_F(Win32ProgressDisplayTest, HoldsThePartsThatAreWanted) {
  for (std::int16_t parts = 1; parts <= kAll; ++parts) {
    SCOPED_TRACE(parts);
    Show(parts);
    ASSERT_NE(Frame(), nullptr);
    EXPECT_TRUE(IsWindowVisible(Frame()));
    RECT inner{};
    GetClientRect(Frame(), &inner);
    LONG below = 0;
    const std::map<const wchar_t*, std::int16_t> controls = {
        {L"STATIC", ProgressDisplay::kText},
        {PROGRESS_CLASSW, ProgressDisplay::kBar},
        {L"BUTTON", ProgressDisplay::kAbortButton}};
    for (const auto& [windowClass, part] : controls) {
      const HWND control = Control(windowClass);
      EXPECT_EQ(control != nullptr, (parts & part) != 0) << Utf8FromWide(windowClass);
      if (control == nullptr) continue;
      RECT place{};
      GetWindowRect(control, &place);
      MapWindowPoints(nullptr, Frame(), reinterpret_cast<POINT*>(&place), 2);
      EXPECT_GT(place.left, 0);
      EXPECT_GT(place.top, 0);
      EXPECT_LT(place.right, inner.right);
      EXPECT_LT(place.bottom, inner.bottom);
      below += place.bottom - place.top;
    }
    EXPECT_GT(inner.bottom, below);  // there is room for all of them
    display.SetLine(Line::Status, "A text.");
    display.SetPosition(1, 2);
    SendMessageW(Frame(), WM_CLOSE, 0, 0);
    EXPECT_EQ(std::exchange(aborts, 0), (parts & ProgressDisplay::kAbortButton) != 0 ? 1 : 0);
    EXPECT_NE(Frame(), nullptr);
  }
  display.Hide();
  EXPECT_EQ(Frame(), nullptr);
}

TEST_F(Win32ProgressDisplayTest, ShowsTextAndPosition) {
  Show();
  EXPECT_EQ(Text(Frame()), "Sending Mail");
  display.SetLine(Line::Status, "Sending \xC3\xA9&\xE4\xB8\xAD...");
  EXPECT_EQ(Text(Control(L"STATIC")), "Sending \xC3\xA9&\xE4\xB8\xAD...");
  constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
  const struct {
    std::uint64_t done, total;
    LRESULT position;
  } cases[] = {{0, 4, 0},
               {1, 4, 250},
               {4, 4, 1000},
               {5, 4, 1000},
               {kMost / 2, kMost, 500},
               {kMost, kMost, 1000},
               {1, kMost, 0}};
  for (const auto& [done, total, position] : cases) {
    display.SetPosition(done, total);
    EXPECT_EQ(Position(), position) << done << " of " << total;
  }
}

TEST_F(Win32ProgressDisplayTest, TheBarRunsWhileTheTotalIsNotKnown) {
  Show();
  const auto runs = [] {
    return (GetWindowLongPtrW(Control(PROGRESS_CLASSW), GWL_STYLE) & PBS_MARQUEE) != 0;
  };
  EXPECT_TRUE(runs());
  display.SetPosition(7, 0);
  EXPECT_TRUE(runs());
  display.SetPosition(7, 14);
  EXPECT_FALSE(runs());
  EXPECT_EQ(Position(), 500);
  display.SetPosition(8, 0);
  EXPECT_TRUE(runs());
}

// The longest words that come have room in their lines, one below the other, when the window has
// been dragged to a monitor of that resolution.
TEST_F(Win32ProgressDisplayTest, NothingIsCutAtAnyResolution) {
  constexpr UINT kDpiChanged = 0x02E0;
  Show();
  LONG before = 0;
  for (const LONG resolution : {96, 144, 192}) {
    SCOPED_TRACE(resolution);
    RECT place{10, 20, 300, 200};
    SendMessageW(Frame(), kDpiChanged, MAKEWPARAM(resolution, resolution),
                 reinterpret_cast<LPARAM>(&place));
    display.SetLine(Line::Status, "Loading message identifiers...");
    display.SetLine(Line::Server, "mail.a-rather-long-name.example.com");
    display.SetLine(Line::Amount, "1023.9 MB of 1023.9 MB (100 %)");
    display.SetLine(Line::Time, "999:59:59 so far, 90 minutes left");
    RECT frame{};
    GetWindowRect(Frame(), &frame);
    EXPECT_EQ(frame.left, 10);
    EXPECT_EQ(frame.top, 20);
    RECT inner{};
    GetClientRect(Frame(), &inner);
    EXPECT_GE(inner.right * 96, before * resolution * 9 / 10);  // has grown, but for roundings
    if (before == 0) before = inner.right;
    LONG top = 0;
    for (HWND control = GetWindow(Frame(), GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
      RECT room{};
      GetWindowRect(control, &room);
      MapWindowPoints(nullptr, Frame(), reinterpret_cast<POINT*>(&room), 2);
      EXPECT_GT(room.top, top);
      top = room.bottom;
      EXPECT_LT(room.right, inner.right);
      const auto text = WideFromUtf8(Text(control));
      const HDC device = GetDC(control);
      const HGDIOBJ font =
          SelectObject(device, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
      SIZE needed{};
      GetTextExtentPoint32W(device, text.data(), static_cast<int>(text.size()), &needed);
      SelectObject(device, font);
      ReleaseDC(control, device);
      EXPECT_LE(needed.cx, room.right - room.left) << Utf8FromWide(text);
      EXPECT_LE(needed.cy, room.bottom - room.top) << Utf8FromWide(text);
    }
    EXPECT_LT(top, inner.bottom);
  }
}

TEST_F(Win32ProgressDisplayTest, AbortsOnceHoweverItIsAsked) {
  const auto press = [](UINT message, WPARAM key) {
    return [=] { SendMessageW(Control(L"BUTTON"), message, key, 0); };
  };
  const std::map<std::string, std::function<void()>> ways = {
      {"button", press(BM_CLICK, 0)},
      {"Esc", press(WM_KEYDOWN, VK_ESCAPE)},
      {"Enter", press(WM_KEYDOWN, VK_RETURN)},
      {"close box", [] { SendMessageW(Frame(), WM_SYSCOMMAND, SC_CLOSE, 0); }}};
  for (const auto& [name, ask] : ways) {
    SCOPED_TRACE(name);
    Show();
    EXPECT_TRUE(IsWindowEnabled(Control(L"BUTTON")));
    ask();
    EXPECT_EQ(aborts, 1);
    EXPECT_FALSE(IsWindowEnabled(Control(L"BUTTON")));
    for (const auto& [otherName, other] : ways) other();
    EXPECT_EQ(aborts, 1);
    display.Hide();
    aborts = 0;
  }
}

TEST_F(Win32ProgressDisplayTest, IsUsedAgainWhenShownAgain) {
  Show();
  const HWND frame = Frame();
  SendMessageW(Control(L"BUTTON"), BM_CLICK, 0, 0);
  display.SetLine(Line::Status, "old");
  display.SetPosition(1, 1);
  int others = 0;
  display.Show("Internet Mail", kAll, [&] { ++others; });
  EXPECT_EQ(Frame(), frame);
  EXPECT_EQ(Text(frame), "Internet Mail");
  EXPECT_EQ(Text(Control(L"STATIC")), "");
  SendMessageW(Control(L"BUTTON"), BM_CLICK, 0, 0);
  EXPECT_EQ(others, 1);
  EXPECT_EQ(aborts, 1);
}

TEST_F(Win32ProgressDisplayTest, TheAbortMayTakeTheWindowAway) {
  bool hidden = false;
  display.Show("Sending Mail", kAll, [&] {
    display.Hide();
    hidden = true;
  });
  SendMessageW(Frame(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(hidden);
  EXPECT_EQ(Frame(), nullptr);
  display.SetLine(Line::Time, "nobody sees it");
  display.SetPosition(1, 2);
}

TEST_F(Win32ProgressDisplayTest, WhatAnAbortThrowsComesOutOfTheLoop) {
  display.Show("Sending Mail", kAll, [] { throw std::runtime_error("failed"); });
  SendMessageW(Frame(), WM_CLOSE, 0, 0);
  EXPECT_THROW(loop->RunPending(), std::runtime_error);
  EXPECT_NO_THROW(loop->RunPending());
}

TEST_F(Win32ProgressDisplayTest, LeavesTheKeyboardToTheActiveWindow) {
  const HWND user = CreateWindowExW(0, L"STATIC", L"user", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50,
                                    nullptr, nullptr, nullptr, nullptr);
  SetActiveWindow(user);
  Show();
  EXPECT_EQ(GetActiveWindow(), user);
  SetActiveWindow(Frame());
  EXPECT_EQ(GetFocus(), Control(L"BUTTON"));
  DestroyWindow(user);
}

}  // namespace
}  // namespace quillon::testing
