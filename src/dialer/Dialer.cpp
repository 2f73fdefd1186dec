#include "dialer/Dialer.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "core/ErrorCode.h"
#include "dialer/RasErrorText.h"
#include "dialer/SideCall.h"
#include "ports/MessageBox.h"

namespace quillon {
namespace {

constexpr std::int16_t kWindows95 = 95;
constexpr std::int16_t kWindowsNt = 5;

constexpr const char* kNoDialerHere = "Cannot use RAS Dialer on 16-bit Windows.";
constexpr const char* kNoLibrary =
    "RASAPI32.DLL could not be loaded.  Remote Access Service may not be installed.";
constexpr const char* kBoxTitle = "Dialer Error";

constexpr const char* kDialUndetermined = "Undetermined error in Dialer object Dial method.";
constexpr const char* kHangUpUndetermined = "Undetermined error in Dialer object HangUp method.";
constexpr const char* kListUndetermined =
    "Undetermined error in Dialer object getting current RAS connections.";
constexpr const char* kActiveUndetermined =
    "Undetermined error in Dialer object ActiveEntryName property.";
// In the order of Dialer::Field.
constexpr std::array kFieldUndetermined{
    "Undetermined error in Dialer object Domain property.",
    "Undetermined error in Dialer object Password property.",
    "Undetermined error in Dialer object UserName property.",
    "Undetermined error in Dialer object Phone Number property.",
    "Undetermined error in Dialer object EntryName property."};

constexpr TickCount kPoll = 50;  // milliseconds

std::int16_t KindOf(SystemFamily family) {
  switch (family) {
    case SystemFamily::Windows16:
      throw ServerError(error_code::kWindows16, kNoDialerHere);
    case SystemFamily::Windows95:
      return kWindows95;
    default:
      return kWindowsNt;
  }
}

// The public number is 0x80040000 + the code; one that would leave the numbers of failures by it
// counts as none.
std::int32_t CodeOf(std::uint32_t number) {
  constexpr std::uint32_t kMost = 0x7FFBFFFFU - std::uint32_t{error_code::kDialer};
  return error_code::kDialer + (number <= kMost ? static_cast<std::int32_t>(number) : 0);
}

constexpr std::size_t IndexOf(Dialer::Field field) {
  return static_cast<std::size_t>(field);
}

}  // namespace

// One Dial, which the other thread works on. It may outlive the object.
struct Dialer::Attempt {
  Attempt(std::shared_ptr<Ras> ras, RasLayout size, RasDialParameters what)
      : library(std::move(ras)), layout(size), parameters(std::move(what)) {}

  void Dial() { result = library->Dial(layout, parameters, connection); }
  void HangUp() noexcept {
    const auto line = connection.exchange(0);
    if (line == 0) return;
    closed = line;
    library->HangUp(line);
  }

  const std::shared_ptr<Ras> library;
  const RasLayout layout;
  const RasDialParameters parameters;
  std::atomic<RasHandle> connection{0};
  std::uint32_t result = ras::kNoNumber;  // belongs to the other thread until the end
  bool givenUp = false;                   // with the next one, belongs to the loop's thread
  RasHandle closed = 0;                   // the connection that was hung up
};

Dialer::Dialer(DialerEnvironment& environment)
    : environment_(environment),
      system_(environment.workstation.System()),
      kind_(KindOf(system_.family)),
      layout_(kind_ == kWindowsNt ? RasLayout::Nt351 : RasLayout::Windows95),
      library_(environment.library.Load()) {
  ++environment_.shared.dialerCount;
}

Dialer::~Dialer() {
  environment_.shared.DialerLeaves();
}

// The frame around a member: what nobody has foreseen gets the member's own text.
template <class Body>
decltype(auto) Dialer::Run(const char* undetermined, Body&& body) const {
  try {
    return body();
  } catch (const ServerError&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    Show(undetermined);
    throw ServerError(error_code::kDialer, undetermined);
  }
}

std::string Dialer::Get(Field field) const {
  return Run(kFieldUndetermined[IndexOf(field)], [&] { return texts_[IndexOf(field)]; });
}

void Dialer::Put(Field field, const std::string& value) {
  Run(kFieldUndetermined[IndexOf(field)], [&] { texts_[IndexOf(field)] = value; });
}

// It may have been installed since.
std::shared_ptr<Ras> Dialer::LibraryOrNull() const {
  if (library_ == nullptr) library_ = environment_.library.Load();
  return library_;
}

std::shared_ptr<Ras> Dialer::Library() const {
  if (auto library = LibraryOrNull()) return library;
  Show(kNoLibrary);
  throw ServerError(error_code::kDialer, kNoLibrary);
}

void Dialer::Show(const std::string& text) const {
  if (environment_.shared.errorDisplay == kFalse) return;
  environment_.messageBox.Show(kBoxTitle, text, MessageBoxPort::Icon::Critical);
}

// The failure of a call of the service, which the user has seen when he wants to.
ServerError Dialer::Failure(Ras& library, std::uint32_t number, const char* undetermined) const {
  const auto text =
      number == ras::kNoNumber ? std::string(undetermined) : RasErrorText(library, number);
  Show(text);
  if (number == ras::kNoNumber) return ServerError(error_code::kDialer, text);
  return ServerError(CodeOf(number), "RAS Error: " + text);
}

void Dialer::Dial() {
  Run(kDialUndetermined, [&] {
    const auto library = Library();
    if (attempt_ != nullptr) throw Failure(*library, ras::kPending, kDialUndetermined);
    const auto attempt = std::make_shared<Attempt>(
        library, layout_,
        RasDialParameters{Get(Field::EntryName), Get(Field::PhoneNumber), Get(Field::UserName),
                          Get(Field::Password), Get(Field::Domain)});
    // The line is free again whatever happens before the connection is this object's.
    struct End {
      ~End() {
        pending.reset();
        attempt.HangUp();
      }
      std::shared_ptr<Attempt>& pending;
      Attempt& attempt;
    };
    const End end{attempt_, *attempt};
    attempt_ = attempt;
    std::uint32_t number = ras::kNoNumber;
    {
      const SideCall call(
          environment_.loop, [attempt] { attempt->Dial(); }, [attempt] { attempt->HangUp(); });
      number = Finish(call, *attempt);
    }
    if (number == ras::kSuccess) {
      connection_ = attempt->connection.exchange(0);
      return;
    }
    const auto failure = Failure(*library, number, kDialUndetermined);
    attempt->HangUp();
    AwaitFreeLine(*library, attempt->closed);
    throw ServerError(failure);
  });
}

// The number that the dial has ended with.
std::uint32_t Dialer::Finish(const SideCall& call, Attempt& attempt) const {
  if (!Await(call, attempt)) {
    // Nobody will use the connection any more. A library that does not return even now is left
    // behind, and the other thread hangs up if it ever does.
    attempt.HangUp();
    if (call.WaitAlone(environment_.partingPatience)) attempt.HangUp();
    throw ServerError(error_code::kDialer, kDialUndetermined);
  }
  if (attempt.givenUp && attempt.result == ras::kSuccess) return ras::kUserDisconnection;
  return attempt.result;
}

// Serves everybody until the dial has ended. False when the program is being ended.
bool Dialer::Await(const SideCall& call, Attempt& attempt) const {
  auto& loop = environment_.loop;
  const auto over = [&] { return call.Done() || attempt.givenUp; };
  if (!loop.RunUntil(over, kNoDeadline)) return false;
  // One that was given up is ended as soon as its connection is known.
  while (!call.Done()) {
    attempt.HangUp();
    const auto until = loop.Now() + kPoll;
    if (!loop.RunUntil([&] { return call.Done(); }, until) && loop.Now() < until) return false;
  }
  return true;
}

void Dialer::HangUp() {
  Run(kHangUpUndetermined, [&] {
    const auto library = Library();
    if (attempt_ != nullptr) {
      attempt_->givenUp = true;
      attempt_->HangUp();
      return;
    }
    const auto line = std::exchange(connection_, 0);
    if (line == 0) return;
    const auto number = library->HangUp(line);
    if (number != ras::kSuccess) {
      // There is nothing left to close only when the service does not know it any more.
      if (number != ras::kInvalidHandle) connection_ = line;
      throw Failure(*library, number, kHangUpUndetermined);
    }
    AwaitFreeLine(*library, line);
  });
}

// The port of a connection is closed some time after the call that closes the connection. Some
// systems never tell the end, so the wait has one of its own.
void Dialer::AwaitFreeLine(Ras& library, RasHandle connection) const {
  if (connection == 0) return;
  auto& loop = environment_.loop;
  const auto end = loop.Now() + environment_.linePatience;
  while (loop.Now() < end && library.ConnectStatus(layout_, connection) == ras::kSuccess) {
    if (!Pause(std::min(end, loop.Now() + kPoll))) return;
  }
}

// False when the program is being ended.
bool Dialer::Pause(TickCount until) const {
  environment_.loop.RunUntil([] { return false; }, until);
  return environment_.loop.Now() >= until;
}

std::string Dialer::ActiveEntryName() const {
  return Run(kActiveUndetermined, [&] {
    const auto library = Library();
    std::vector<RasConnection> connections;
    const auto number = library->EnumConnections(layout_, connections);
    if (number != ras::kSuccess) throw Failure(*library, number, kListUndetermined);
    for (const auto& one : connections) {
      if (connection_ != 0 && one.handle == connection_) return one.entryName;
    }
    return connections.empty() ? std::string() : connections.front().entryName;
  });
}

std::string Dialer::WindowsVersion() const {
  return system_.number;
}

ShortBool Dialer::DialerAvailable() const {
  return LibraryOrNull() != nullptr ? kTrue : kFalse;
}

}  // namespace quillon
