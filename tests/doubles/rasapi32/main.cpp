// rasapi32.dll: dial-up without a line. Each call is written to the desk's log with what it was
// given, the dial parameters byte by byte, and fails as the desk's faults say. The file
// connections.txt of the desk names an entry per line: connections that other programs have made.
//
// A dial that fails leaves its handle behind. A connection that was hung up is there for one more
// look at its state.
#include <windows.h>
#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Text.h"
#include "desk/PlainFile.h"
#include "desk/win32/AnsiText.h"
#include "desk/win32/CallGate.h"
#include "desk/win32/TheStore.h"

namespace {

struct RasFailure {
  DWORD number;
};

constexpr DWORD kInvalidHandle = 6;
constexpr DWORD kInvalidParameter = 87;
constexpr DWORD kBufferTooSmall = 603;
constexpr DWORD kWrongSize = 632;
constexpr DWORD kConnected = 0x2000;
constexpr DWORD kDisconnected = 0x2001;

struct Line {
  std::string entry;  // in the code page
  bool hungUp = false;
};

struct Lines {
  std::mutex mutex;
  std::map<DWORD, Line> open;
  DWORD last = 0x2A00;
};

Lines& TheLines() {
  static Lines lines;
  return lines;
}

[[noreturn]] void Fail(unsigned long number) {
  throw RasFailure{number};
}

void Enter(const std::string& call, const std::string& arguments) {
  desk::EnterCall(call, arguments, &Fail);
}

// A word of the fault file that is for no call.
std::optional<std::string> Told(const std::string& name) {
  const std::scoped_lock oneAtATime(desk::StoreMutex());
  return desk::TheStore().Call(name, {});
}

// The body's failure becomes the result.
template <class Body>
DWORD Answer(Body&& body) {
  try {
    body();
    return 0;
  } catch (const RasFailure& failure) {
    return failure.number;
  } catch (const std::exception&) {
    return kInvalidParameter;
  }
}

DWORD SizeOf(const BYTE* record, std::initializer_list<DWORD> known) {
  DWORD size = 0;
  std::memcpy(&size, record, sizeof size);
  if (std::find(known.begin(), known.end(), size) == known.end()) Fail(kWrongSize);
  return size;
}

std::string Hex(const BYTE* bytes, DWORD count) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (DWORD i = 0; i < count; ++i) {
    text += {kDigits[bytes[i] / 16U], kDigits[bytes[i] % 16U]};
  }
  return text;
}

std::vector<Line> OthersLines() {
  std::vector<Line> others;
  const auto text = desk::ReadBytes("C:\\QuillonDesk\\connections.txt").value_or("");
  for (const auto& name : quillon::Split(text, "\n")) {
    if (!name.empty()) others.push_back({desk::AnsiFrom(name)});
  }
  return others;
}

}  // namespace

extern "C" {

DWORD WINAPI RasDialA(void* extensions, const char* phoneBook, const BYTE* parameters,
                      DWORD notifierKind, void* notifier, DWORD* connection) {
  return Answer([&] {
    if (extensions != nullptr || phoneBook != nullptr || notifierKind != 0 || notifier != nullptr ||
        *connection != 0) {
      Fail(kInvalidParameter);
    }
    {
      auto& lines = TheLines();
      const std::scoped_lock oneAtATime(lines.mutex);
      *connection = ++lines.last;
      lines.open[*connection].entry = reinterpret_cast<const char*>(parameters + 4);
    }
    const auto size = SizeOf(parameters, {736, 1052, 1060});
    Enter("RasDialA", Hex(parameters, size));
  });
}

DWORD WINAPI RasHangUpA(DWORD connection) {
  return Answer([&] {
    Enter("RasHangUpA", std::to_string(connection));
    auto& lines = TheLines();
    const std::scoped_lock oneAtATime(lines.mutex);
    const auto found = lines.open.find(connection);
    if (found == lines.open.end()) Fail(kInvalidHandle);
    found->second.hungUp = true;
  });
}

DWORD WINAPI RasEnumConnectionsA(BYTE* records, DWORD* bytes, DWORD* count) {
  return Answer([&] {
    const auto size = SizeOf(records, {32, 412});
    auto listed = OthersLines();
    auto& lines = TheLines();
    std::vector<DWORD> handles(listed.size(), 1);
    {
      const std::scoped_lock oneAtATime(lines.mutex);
      for (const auto& [handle, line] : lines.open) {
        handles.push_back(handle);
        listed.push_back(line);
      }
    }
    *count = static_cast<DWORD>(listed.size());
    const DWORD room = *bytes / size;
    *bytes = *count * size;
    const std::size_t entrySize = size == 32 ? 21 : 257;
    for (DWORD i = 0; i < std::min(room, *count); ++i) {
      BYTE* const record = records + i * size;
      std::memcpy(record, &size, sizeof size);
      std::memcpy(record + 4, &handles[i], sizeof handles[i]);
      // A name that fills its field has no zero at its end here, which the real one has.
      std::memset(record + 8, 0, entrySize);
      const std::string_view entry = std::string_view(listed[i].entry).substr(0, entrySize);
      std::copy(entry.begin(), entry.end(), record + 8);
    }
    Enter("RasEnumConnectionsA", std::to_string(room));
    if (*count > room) Fail(kBufferTooSmall);
    if (const auto told = Told("RasConnectionCount")) *count = std::stoul(*told);
  });
}

DWORD WINAPI RasGetConnectStatusA(DWORD connection, BYTE* record) {
  return Answer([&] {
    SizeOf(record, {64, 160, 288});
    Enter("RasGetConnectStatusA", std::to_string(connection));
    auto& lines = TheLines();
    const std::scoped_lock oneAtATime(lines.mutex);
    const auto found = lines.open.find(connection);
    if (found == lines.open.end()) Fail(kInvalidHandle);
    const DWORD state = found->second.hungUp ? kDisconnected : kConnected;
    std::memcpy(record + 4, &state, sizeof state);
    if (found->second.hungUp) lines.open.erase(found);
  });
}

DWORD WINAPI RasGetErrorStringA(UINT number, char* text, DWORD size) {
  return Answer([&] {
    Enter("RasGetErrorStringA", std::to_string(number));
    constexpr std::array<std::pair<UINT, const char*>, 4> kTexts{
        {{600, "The connection is being made."},
         {632, "The record has the wrong size."},
         {676, "The line is busy."},
         {691, "The name or the password is wrong."}}};
    const auto* const found = std::find_if(kTexts.begin(), kTexts.end(),
                                           [&](const auto& row) { return row.first == number; });
    if (found == kTexts.end()) Fail(kInvalidParameter);
    if (size <= std::strlen(found->second)) Fail(kBufferTooSmall);
    std::strcpy(text, found->second);
  });
}

}  // extern "C"
