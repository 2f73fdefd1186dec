// A compiled program that uses the desk's vim32.dll directly, for what a well-behaved client never
// does: what it refuses, and that it gives much in several pieces. The inbox has ten messages.
// Each thing that is not as it should be is a line; exit status 0 when there is none.
#include <windows.h>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using Dword = std::uint32_t;
using Word = std::uint16_t;

struct Ref {
  Dword first;
  Dword second;
};
struct Attribute {
  Dword selector;
  Dword size;
  void* buffer;
};

constexpr Dword kSubject = 91;
constexpr Dword kReference = 76;
constexpr Dword kNoFilter = 58;
constexpr Dword kCp1252 = 16;

int& Wrong() {
  static int wrong = 0;
  return wrong;
}

void Expect(Dword wanted, Dword found, const char* what) {
  if (wanted == found) return;
  std::printf("%s: %lu instead of %lu\n", what, static_cast<unsigned long>(found),
              static_cast<unsigned long>(wanted));
  ++Wrong();
}

template <class... Arguments>
Dword Vim(const char* name, Arguments... arguments) {
  static const HMODULE library = LoadLibraryW(L"vim32.dll");
  using Function = Dword(WINAPI*)(Arguments...);
  const auto function =
      reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
  if (function != nullptr) return function(arguments...);
  std::printf("%s is missing\n", name);
  std::exit(2);
}

char* Null() {
  return nullptr;
}

Dword Session(const char* path, const char* name, const char* password, Dword* session) {
  return Vim("VIMOpenSession", path, name, password, Dword{100}, kCp1252, session);
}

Dword Subjects(Dword container, Ref* position, Dword skip, Dword size, Word* count, Word* more) {
  std::vector<char> places(std::size_t{size} * *count);
  Attribute wanted{kSubject, size, places.data()};
  return Vim("VIMEnumerateMessages", container, position, skip, Dword{1}, &wanted, count, kNoFilter,
             Null(), Dword{0}, more);
}

void Enumerate(Dword container) {
  Ref position{0, 0};
  Word count = 20;
  Word more = 0;
  Expect(6, Subjects(container, &position, 1, 9, &count, &more),
         "a buffer without room for a zero");
  Expect(0, position.first, "a refused call moves nothing");
  count = 20;
  Expect(0, Subjects(container, &position, 1, 40, &count, &more), "the first ones");
  Expect(8, count, "so many at once");
  Expect(1, more, "there are more");
  Expect(0, Subjects(container, &position, 2, 40, &count, &more), "one left out");
  Expect(1, count, "the last");
  Expect(0, more, "the end");
  Expect(0, Subjects(container, &position, 1, 40, &count, &more), "behind the end");
  Expect(0, count, "nothing there");
  Attribute unknown{9999, 40, &position};
  position = {0, 0};
  count = 1;
  Expect(21,
         Vim("VIMEnumerateMessages", container, &position, Dword{1}, Dword{1}, &unknown, &count,
             kNoFilter, Null(), Dword{0}, &more),
         "an attribute that is not known");
}

void UseMessage(Dword session, Dword container) {
  Ref position{0, 0};
  Ref reference{};
  Word count = 1;
  Word more = 0;
  Attribute wanted{kReference, sizeof reference, &reference};
  Expect(0,
         Vim("VIMEnumerateMessages", container, &position, Dword{1}, Dword{1}, &wanted, &count,
             kNoFilter, Null(), Dword{0}, &more),
         "a reference");
  Dword message = 0;
  Expect(10, Vim("VIMOpenMessage", session, reference, Null(), &message), "no container");
  Expect(5, Vim("VIMOpenMessage", container, Ref{reference.first, 0}, Null(), &message),
         "no reference");
  Expect(0, Vim("VIMOpenMessage", container, reference, Null(), &message), "a message");
  Expect(10, Vim("VIMSendMessage", message, Null(), Null()), "a message that is read is not sent");
  Expect(0, Vim("VIMCloseMessage", message), "closed");
  Expect(10, Vim("VIMCloseMessage", message), "closed twice");
  Expect(0, Vim("VIMCreateMessage", session, "VIM_MAIL", &message), "a new message");
  Expect(5, Vim("VIMSetMessageHeader", message, Dword{79}, Dword{1}, "1"), "a flag of one byte");
  Expect(256, Vim("VIMSendMessage", message, Null(), Null()), "sent to nobody");
  Expect(10, Vim("VIMCloseMessage", message), "sending has closed it");
}

}  // namespace

int main() {
  Dword session = 0;
  Dword container = 0;
  Expect(1, Session(nullptr, nullptr, nullptr, &session), "a call before VIMInitialize");
  Expect(0, Vim("VIMInitialize"), "VIMInitialize");
  Expect(3, Session("", "ann", "secret", &session), "no post office");
  Expect(3, Session("C:\\", "ann", nullptr, &session), "no password");
  Expect(11, Session("C:\\", "ann", "wrong", &session), "wrong password");
  Expect(0, Session("C:\\", "ann", "secret", &session), "a session");
  Expect(22, Vim("VIMOpenMessageContainer", session, "Nowhere", &container), "no such container");
  Expect(0, Vim("VIMOpenMessageContainer", session, Null(), &container), "the inbox");
  Enumerate(container);
  UseMessage(session, container);
  Expect(0, Vim("VIMCloseSession", session), "the session closed");
  Expect(10, Vim("VIMCloseMessageContainer", container), "its container is no good any more");
  Expect(0, Vim("VIMTerminate"), "VIMTerminate");
  Expect(1, Vim("VIMCloseSession", session), "a call after VIMTerminate");
  return Wrong() == 0 ? 0 : 1;
}
