// A mail program behind Simple MAPI: an inbox in memory, every call recorded, any call failing as
// told.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ports/SimpleMapi.h"

namespace quillon::testing {

class RecordingMapi final : public SimpleMapi {
 public:
  struct Entry {
    std::string id;
    MapiMessage message;
  };

  std::uint32_t Logon(std::uint32_t window, const std::string& profile, const std::string& password,
                      std::uint32_t flags, std::uint32_t& session) override {
    Record("Logon", {Number(window), profile, password, Number(flags)});
    if (const auto failure = Failure()) return failure;
    session = nextSession++;
    open.insert(session);
    return mapi::kSuccess;
  }
  std::uint32_t Logoff(std::uint32_t session, std::uint32_t window) override {
    Record("Logoff", {Number(session), Number(window)});
    if (const auto failure = Failure()) return failure;
    return open.erase(session) != 0 ? mapi::kSuccess : kInvalidSession;
  }
  std::uint32_t FindNext(std::uint32_t session, std::uint32_t, const std::string& messageType,
                         const std::string& seed, std::uint32_t flags, std::string& id) override {
    Record("FindNext", {messageType, seed, Number(flags)});
    if (const auto failure = FailureIn(session)) return failure;
    const bool unreadOnly = (flags & mapi::kUnreadOnly) != 0;
    auto found = inbox.begin();
    if (!seed.empty()) found = std::next(Find(seed));
    while (found != inbox.end() && unreadOnly && (found->message.flags & mapi::kUnread) == 0) {
      ++found;
    }
    if (found == inbox.end()) return mapi::kNoMessages;
    id = found->id;
    return mapi::kSuccess;
  }
  std::uint32_t ReadEnvelope(std::uint32_t session, std::uint32_t, const std::string& id,
                             std::uint32_t flags, MapiMessage& message) override {
    Record("ReadEnvelope", {id, Number(flags)});
    return Read(session, id, flags, message);
  }
  std::uint32_t ReadMail(std::uint32_t session, std::uint32_t, const std::string& id,
                         std::uint32_t flags, MapiMessage& message) override {
    Record("ReadMail", {id, Number(flags)});
    return Read(session, id, flags, message);
  }
  std::uint32_t DeleteMail(std::uint32_t session, std::uint32_t, const std::string& id) override {
    Record("DeleteMail", {id});
    if (const auto failure = FailureIn(session)) return failure;
    inbox.erase(Find(id));
    return mapi::kSuccess;
  }
  std::uint32_t ResolveName(std::uint32_t session, std::uint32_t, const std::string& name,
                            std::uint32_t flags, MapiRecipient& recipient) override {
    Record("ResolveName", {name, Number(flags)});
    if (const auto failure = FailureIn(session)) return failure;
    recipient = {mapi::kTo, name + " Resolved", "SMTP:" + name + "@example.com", "id of " + name};
    return mapi::kSuccess;
  }
  std::uint32_t Address(std::uint32_t session, std::uint32_t window, const std::string& caption,
                        std::vector<MapiRecipient>& recipients) override {
    Record("Address", {Number(window), caption, std::to_string(recipients.size())});
    if (const auto failure = FailureIn(session)) return failure;
    recipients.insert(recipients.end(), chosen.begin(), chosen.end());
    return mapi::kSuccess;
  }
  std::uint32_t SendMail(std::uint32_t session, std::uint32_t, const MapiMessage& message,
                         std::uint32_t flags) override {
    Record("SendMail", {Number(flags)});
    return Take(session, message);
  }
  std::uint32_t SendMailInDialog(std::uint32_t session, std::uint32_t, const MapiMessage& message,
                                 std::uint32_t flags) override {
    Record("SendMailInDialog", {Number(flags)});
    return Take(session, message);
  }

  // The names of the calls so far.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& call : calls) names.push_back(call.substr(0, call.find(' ')));
    return names;
  }

  std::vector<Entry> inbox;
  std::vector<MapiMessage> sent;
  std::vector<MapiRecipient> chosen;  // in the address book's window
  std::set<std::uint32_t> open;
  std::vector<std::string> calls;
  // By the name of the call, or by how many calls there were before it.
  std::map<std::string, std::uint32_t> failures;
  std::map<std::size_t, std::uint32_t> failuresAt;
  std::uint32_t nextSession = 41;

 private:
  static constexpr std::uint32_t kInvalidSession = 19;
  static constexpr std::uint32_t kInvalidMessage = 17;

  static std::string Number(std::uint32_t number) { return std::to_string(number); }

  void Record(const std::string& name, const std::vector<std::string>& arguments) {
    auto call = name;
    for (const auto& argument : arguments) call += " " + argument;
    calls.push_back(call);
  }
  std::uint32_t Failure() const {
    const auto at = failuresAt.find(calls.size() - 1);
    if (at != failuresAt.end()) return at->second;
    const auto named = failures.find(Names().back());
    return named != failures.end() ? named->second : mapi::kSuccess;
  }
  std::uint32_t FailureIn(std::uint32_t session) const {
    const auto failure = Failure();
    if (failure != mapi::kSuccess) return failure;
    return open.contains(session) ? mapi::kSuccess : kInvalidSession;
  }
  std::vector<Entry>::iterator Find(const std::string& id) {
    return std::find_if(inbox.begin(), inbox.end(), [&](auto& entry) { return entry.id == id; });
  }
  std::uint32_t Read(std::uint32_t session, const std::string& id, std::uint32_t flags,
                     MapiMessage& message) {
    if (const auto failure = FailureIn(session)) return failure;
    const auto found = Find(id);
    if (found == inbox.end()) return kInvalidMessage;
    message = found->message;
    if ((flags & (mapi::kEnvelopeOnly | mapi::kSuppressAttach)) != 0) message.files.clear();
    if ((flags & mapi::kPeek) == 0) found->message.flags &= ~mapi::kUnread;
    return mapi::kSuccess;
  }
  std::uint32_t Take(std::uint32_t session, const MapiMessage& message) {
    if (const auto failure = FailureIn(session)) return failure;
    sent.push_back(message);
    return mapi::kSuccess;
  }
};

}  // namespace quillon::testing
