// A mail system behind a provider library: an inbox in memory, every call recorded, any call
// failing as told.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ports/MailProvider.h"

namespace quillon::testing {

class RecordingProvider final : public MailProvider {
 public:
  struct Entry {
    ProviderHeader header;
    ProviderMessage message;
    std::vector<std::string> files;  // their names
  };

  std::int32_t Load(const std::string& library) override {
    return library == "mail.dll" ? Record("Load", library) : provider::kMissing;
  }
  std::int32_t Login(const ProviderCall& call, const ProviderLogin& login,
                     std::int32_t& session) override {
    session = nextSession++;
    return Record("Login", std::to_string(call.window) + " " + login.name + " " + login.password +
                               " " + login.postOffice + (login.dialog ? " dialog" : "") +
                               (login.download ? " download" : ""));
  }
  std::int32_t Logout(const ProviderCall& call) override {
    return Record("Logout", std::to_string(call.session));
  }
  std::int32_t Send(const ProviderCall&, const ProviderMessage& message) override {
    sent.push_back(message);
    return Record("Send", message.subject);
  }
  std::int32_t List(const ProviderCall& call, const ProviderListing& listing,
                    const Found& found) override {
    for (const auto& entry : inbox) {
      if (!found(entry.header)) break;
    }
    return Record("List", std::to_string(call.session) + " " + PathOf(listing.folder) + " " +
                              std::to_string(listing.most) + (listing.unreadOnly ? " unread" : "") +
                              (listing.byDate ? " sorted" : ""));
  }
  std::int32_t Read(const ProviderCall&, const ProviderReading& reading, ProviderMessage& message,
                    const NewFile& newFile) override {
    const auto found = std::find_if(inbox.begin(), inbox.end(), [&](const auto& entry) {
      return entry.header.id == reading.id;
    });
    if (found == inbox.end()) return kNoMessage;
    message = found->message;
    for (const auto& name : found->files) {
      if (reading.withoutFiles) break;
      paths.push_back(newFile(name));
      if (paths.back().empty()) return provider::kFileNotWritten;
    }
    return Record("Read", reading.id + (reading.peek ? " peek" : ""));
  }
  std::int32_t Delete(const ProviderCall&, const std::string& id) override {
    return Record("Delete", id);
  }
  std::int32_t Move(const ProviderCall&, const std::string& id,
                    const ProviderFolder& folder) override {
    return Record("Move", id + " " + PathOf(folder));
  }
  std::int32_t UnreadCount(const ProviderCall&, const ProviderFolder& folder,
                           std::uint32_t& count) override {
    count = unread;
    return Record("UnreadCount", PathOf(folder));
  }
  std::int32_t GetSession(const ProviderCall& call, std::int32_t& session) override {
    if (const auto moved = renumbered.find(call.session); moved != renumbered.end()) {
      session = moved->second;
    }
    return Record("GetSession", std::to_string(call.session));
  }
  std::int32_t SetSession(const ProviderCall& call) override {
    return Record("SetSession", std::to_string(call.session));
  }
  bool HasAddressBooks() override { return hasBooks; }
  bool HasAddressWindow() override { return hasWindow; }
  std::int32_t Books(const ProviderCall& call, std::vector<std::string>& names) override {
    names = {"People", "Lists"};
    return Record("Books", std::to_string(call.session));
  }
  std::int32_t Entries(const ProviderCall&, const ProviderEntries& part,
                       std::vector<ProviderEntry>& entries) override {
    for (auto i = part.from; i < people.size() && entries.size() < part.most; ++i) {
      entries.push_back(people[i]);
    }
    return Record("Entries", part.book + " " + std::to_string(part.from));
  }
  std::int32_t ChooseAddresses(const ProviderCall& call,
                               std::vector<ProviderParty>& parties) override {
    std::string before = std::to_string(call.window);
    for (const auto& party : parties) before += " " + std::to_string(party.kind) + party.name;
    if (!failures.contains("ChooseAddresses")) parties = chosen;
    return Record("ChooseAddresses", before);
  }
  std::string ErrorText(std::int32_t number) override {
    return number == 3001 ? "Nobody of that name." : std::string();
  }

  static constexpr std::int32_t kNoMessage = 3004;

  std::vector<Entry> inbox;
  std::vector<ProviderMessage> sent;
  std::vector<std::string> calls;  // but for Load
  std::vector<std::string> paths;  // of files that were made
  std::map<std::string, std::int32_t> failures;
  std::map<std::int32_t, std::int32_t> renumbered;
  bool hasBooks = true;
  bool hasWindow = true;
  std::vector<ProviderEntry> people;
  std::vector<ProviderParty> chosen;
  std::uint32_t unread = 0;
  std::int32_t nextSession = 41;

 private:
  static std::string PathOf(const ProviderFolder& folder) {
    std::string path = "/";
    for (const auto& name : folder) path += name + "/";
    return path;
  }
  std::int32_t Record(const std::string& name, const std::string& arguments) {
    if (name != "Load") calls.push_back(TrimmedCall(name + " " + arguments));
    const auto failure = failures.find(name);
    return failure != failures.end() ? failure->second : provider::kSuccess;
  }
  static std::string TrimmedCall(std::string call) {
    call.erase(call.find_last_not_of(' ') + 1);
    return call;
  }
};

}  // namespace quillon::testing
