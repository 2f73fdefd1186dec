// The post office of a Store: accounts, the address book, and delivering.
#include <algorithm>

#include "core/Text.h"
#include "desk/Store.h"

namespace desk {

namespace fs = std::filesystem;

namespace {

using quillon::EqualsIgnoreCase;

constexpr std::string_view kBookAtFirst =
    "Carl Example <SMTP:carl@elsewhere.example>\n"
    "Sam Smith <SMTP:sam.smith@elsewhere.example>\n"
    "Sam Smithers <SMTP:sam.smithers@elsewhere.example>\n"
    "Samantha Stone <SMTP:samantha@elsewhere.example>\n"
    "Fax Machine <FAX:5551234>\n";

// "joe@x" of "SMTP:joe@x"; another type of address is part of it.
std::string_view BareAddress(std::string_view address) {
  constexpr std::string_view kType = "SMTP:";
  return EqualsIgnoreCase(address.substr(0, kType.size()), kType) ? address.substr(kType.size())
                                                                  : address;
}

bool SameAddress(std::string_view left, std::string_view right) {
  return EqualsIgnoreCase(BareAddress(left), BareAddress(right));
}

bool BeginsWith(std::string_view text, std::string_view beginning) {
  return EqualsIgnoreCase(text.substr(0, beginning.size()), beginning);
}

bool Reaches(const Recipient& recipient, const Account& account) {
  if (!recipient.address.empty()) return SameAddress(recipient.address, account.address);
  return EqualsIgnoreCase(recipient.name, account.name) ||
         EqualsIgnoreCase(recipient.name, account.profile) ||
         SameAddress(recipient.name, account.address);
}

void WriteAccount(const fs::path& mailbox, const Account& account) {
  PlainFile file;
  file.Add("name", account.name);
  file.Add("address", account.address);
  file.Add("password", account.password);
  file.AddFlag("default", account.isDefault);
  ReplacePlainFile(mailbox / "account.txt", file);
}

}  // namespace

void Store::MakeIfMissing() {
  const fs::path book = place_ / "addressbook.txt";
  if (fs::exists(book)) return;
  fs::create_directories(place_ / "making");
  const Account accounts[] = {{"ann", "secret", "Ann Archer", "SMTP:ann@desk.example", true},
                              {"bob", "secret", "Bob Baker", "SMTP:bob@desk.example", false}};
  for (const Account& account : accounts) {
    MakeMailbox(account.profile);
    for (const char* name : {kInbox, kOutbox, kSentItems, kDeletedItems}) {
      KnownFolder(account.profile, name);
    }
    WriteAccount(Mailbox(account.profile), account);
  }
  MakeMailbox(kPublicFolders);
  MakeMailbox(kOutside);
  ReplaceBytes(book, kBookAtFirst);
}

void Store::MakeMailbox(std::string_view mailbox) {
  if (fs::exists(Mailbox(mailbox) / "folders" / "folder.txt")) return;
  Folder none;
  none.mailbox = mailbox;
  MakeFolder(Mailbox(mailbox) / "folders", none, mailbox);
}

std::vector<Account> Store::Accounts() const {
  std::vector<Account> accounts;
  for (const fs::directory_entry& entry : fs::directory_iterator(place_ / "mailboxes")) {
    const std::optional<PlainFile> file = ReadPlainFile(entry.path() / "account.txt");
    if (!file) continue;
    accounts.push_back({Utf8FromPath(entry.path().filename()), file->Value("password"),
                        file->Value("name"), file->Value("address"), file->Flag("default")});
  }
  std::sort(accounts.begin(), accounts.end(),
            [](const Account& a, const Account& b) { return a.profile < b.profile; });
  return accounts;
}

std::optional<Account> Store::FindAccount(std::string_view profile) const {
  for (const Account& account : Accounts()) {
    if (profile.empty() ? account.isDefault : EqualsIgnoreCase(account.profile, profile)) {
      return account;
    }
  }
  return std::nullopt;
}

std::vector<Entry> Store::AddressBook() const {
  std::vector<Entry> entries;
  for (const Account& account : Accounts()) entries.push_back({account.name, account.address});
  const std::string text = ReadBytes(place_ / "addressbook.txt").value_or("");
  for (const std::string& line : quillon::Split(text, "\n")) {
    const std::size_t open = line.find(" <");
    const std::size_t close = line.find('>', open);
    if (close == std::string::npos) continue;
    entries.push_back({line.substr(0, open), line.substr(open + 2, close - open - 2),
                       line.substr(close + 1).starts_with(" group")});
  }
  return entries;
}

std::vector<Entry> Store::Resolve(std::string_view text) const {
  text = quillon::Trim(text);
  if (text.empty()) return {};
  std::vector<Entry> possible;
  for (const Entry& entry : AddressBook()) {
    if (EqualsIgnoreCase(entry.name, text) || SameAddress(entry.address, text)) return {entry};
    if (BeginsWith(entry.name, text)) possible.push_back(entry);
  }
  if (const std::optional<Account> account = FindAccount(text)) {
    return {{account->name, account->address}};
  }
  if (!possible.empty()) return possible;
  const bool typed = text.find(':') != std::string_view::npos;
  if (!typed && text.find('@') == std::string_view::npos) return {};
  return {{std::string(BareAddress(text)), (typed ? "" : "SMTP:") + std::string(text)}};
}

std::string Store::Send(const Account& account, Message message, bool keep) {
  message.senderName = account.name;
  message.senderAddress = account.address;
  message.date = DateNow();
  message.sent = true;
  if (message.conversationTopic.empty()) message.conversationTopic = message.subject;
  message.unread = false;
  bool outside = false;
  std::vector<std::string> mailboxes;
  const std::vector<Account> accounts = Accounts();
  for (const Recipient& recipient : message.recipients) {
    const auto here = std::find_if(accounts.begin(), accounts.end(),
                                   [&](const Account& each) { return Reaches(recipient, each); });
    if (here == accounts.end()) {
      outside = true;
    } else if (std::find(mailboxes.begin(), mailboxes.end(), here->profile) == mailboxes.end()) {
      mailboxes.push_back(here->profile);
    }
  }
  for (const std::string& mailbox : mailboxes) Deliver(message, mailbox);
  if (outside) Add(Root(kOutside), message);
  std::string id;
  if (keep) id = Add(KnownFolder(account.profile, kSentItems), message);
  if (!message.id.empty()) Remove(account.profile, message.id);
  return id;
}

void Store::Deliver(const Message& message, std::string_view mailbox) {
  Message delivered = message;
  delivered.unread = true;
  std::erase_if(delivered.recipients,
                [](const Recipient& recipient) { return recipient.recipientClass == 3; });
  Add(KnownFolder(mailbox, kInbox), delivered);
}

}  // namespace desk
