#include "mail_directory.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <fstream>
#include <iterator>
#include <random>

namespace sample {

namespace {

constexpr char kBetween = '\t';  // a name and an address
constexpr char kBook[] = "Book";
constexpr char kUsers[] = "Users";

// What comes from outside becomes part of a path only when it can be nothing but one name in it.
const std::string& Checked(const std::string& name) {
  const bool isPlain =
      !name.empty() && name.size() <= 100 && name.front() != '.' && name.back() != '.' &&
      name.back() != ' ' && name.find_first_of("/\\:*?\"<>|") == std::string::npos &&
      std::none_of(name.begin(), name.end(), [](unsigned char c) { return c < ' '; });
  if (!isPlain) throw Failure{kBadName, name};
  return name;
}

std::string Lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

std::string WholeFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A value stands on one line.
std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
  return text;
}

std::string Now(const char* format) {
  const std::time_t now = std::time(nullptr);
  char text[40];
  return {text, std::strftime(text, sizeof text, format, std::localtime(&now))};
}

// Later ones are greater, and no two are the same, whatever other programs do at the same time.
std::string NewName() {
  static std::atomic<unsigned> count{std::random_device{}() % 1000000};
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto ticks = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
  return std::to_string(ticks) + "-" + std::to_string(count++);
}

// The directory of the user that a recipient means: "joe", or "joe@" and anything.
std::string UserOf(const Party& party) {
  const std::string& text = party.address.empty() ? party.name : party.address;
  return Lower(text.substr(0, text.find('@')));
}

void Write(const Message& message, const fs::path& directory) {
  std::ofstream file(directory / "message.txt", std::ios::binary);
  const auto line = [&](const char* key, const std::string& value) {
    file << key << ": " << OneLine(value) << "\n";
  };
  const auto party = [&](const char* key, const Party& one) {
    file << key << ": " << OneLine(one.name) << kBetween << OneLine(one.address) << "\n";
  };
  line("subject", message.subject);
  line("date", message.date);
  line("receipt", message.receipt ? "yes" : "no");
  line("importance", std::to_string(message.importance));
  party("from", message.from);
  for (const auto& one : message.recipients) {
    if (one.kind == 1) party("to", one);
    if (one.kind == 2) party("cc", one);
  }
  int number = 0;
  for (const auto& attachment : message.attachments) {
    line("attachment", attachment.name);
    fs::copy_file(attachment.file, directory / std::to_string(++number));
  }
  file << "\n" << message.text;
  file.close();
  if (!file) throw Failure{kFilesFailed, Utf8From(directory)};
}

void Deliver(const Message& message, const fs::path& folder, bool unread) {
  const std::string name = NewName();
  const fs::path half = folder / ("." + name);
  fs::create_directories(half);
  try {
    Write(message, half);
    if (unread) std::ofstream(half / "unread");
    fs::rename(half, folder / name);
  } catch (...) {
    std::error_code ignored;
    fs::remove_all(half, ignored);
    throw;
  }
}

Party PartyFrom(int kind, const std::string& value) {
  const auto end = value.find(kBetween);
  if (end == std::string::npos) return {kind, value, {}};
  return {kind, value.substr(0, end), value.substr(end + 1)};
}

void TakeLine(const fs::path& directory, const std::string& key, const std::string& value,
              Message& message) {
  if (key == "subject") message.subject = value;
  if (key == "date") message.date = value;
  if (key == "receipt") message.receipt = value == "yes";
  if (key == "importance") message.importance = value.size() == 1 ? value[0] - '0' : 3;
  if (key == "from") message.from = PartyFrom(0, value);
  if (key == "to") message.recipients.push_back(PartyFrom(1, value));
  if (key == "cc") message.recipients.push_back(PartyFrom(2, value));
  if (key == "attachment") {
    const auto number = std::to_string(message.attachments.size() + 1);
    message.attachments.push_back({value, directory / number});
  }
}

}  // namespace

fs::path PathFrom(const std::string& utf8) {
  return fs::u8path(utf8);
}

std::string Utf8From(const fs::path& path) {
  return path.u8string();
}

// Some libraries take any two files for one in std::filesystem::copy_file, and refuse.
void CopyInto(const fs::path& from, const fs::path& to) {
  std::ifstream in(from, std::ios::binary);
  std::ofstream out(to, std::ios::binary);
  if (in && in.peek() != std::ifstream::traits_type::eof()) out << in.rdbuf();
  out.close();
  if (!in.is_open() || in.bad() || !out) throw Failure{kFilesFailed, Utf8From(to)};
}

std::string MailDirectory::Login(const std::string& name, const std::string& password) const {
  std::string user = Lower(name);
  const fs::path home = root_ / PathFrom(Checked(user));
  if (!fs::is_directory(home)) throw Failure{kNoUser, name};
  if (fs::exists(home / "password.txt")) {
    std::string wanted = WholeFile(home / "password.txt");
    wanted.erase(wanted.find_last_not_of("\r\n") + 1);
    if (password != wanted) throw Failure{kWrongPassword, name};
  }
  return user;
}

void MailDirectory::Send(const std::string& user, const Message& message) const {
  std::vector<fs::path> inboxes;
  for (const auto& recipient : message.recipients) {
    const fs::path home = root_ / PathFrom(Checked(UserOf(recipient)));
    if (!fs::is_directory(home)) throw Failure{kNoUser, UserOf(recipient)};
    inboxes.push_back(home / "inbox");
  }
  std::sort(inboxes.begin(), inboxes.end());
  inboxes.erase(std::unique(inboxes.begin(), inboxes.end()), inboxes.end());
  Message dated = message;
  dated.date = Now("%Y-%m-%d %H:%M:%S");
  if (dated.from.name.empty() && dated.from.address.empty()) dated.from.name = user;
  Deliver(dated, root_ / PathFrom(user) / "sent", false);
  for (const auto& inbox : inboxes) Deliver(dated, inbox, true);
}

fs::path MailDirectory::FolderOf(const std::string& user, const std::string& folder) const {
  return root_ / PathFrom(user) / PathFrom(Checked(Lower(folder)));
}

fs::path MailDirectory::MessageAt(const std::string& user, const std::string& id) const {
  const auto slash = id.find('/');
  if (slash == std::string::npos) throw Failure{kNoMessage, id};
  fs::path path = FolderOf(user, id.substr(0, slash)) / PathFrom(Checked(id.substr(slash + 1)));
  if (!fs::is_directory(path)) throw Failure{kNoMessage, id};
  return path;
}

std::vector<std::string> MailDirectory::List(const std::string& user,
                                             const std::string& folder) const {
  const fs::path place = FolderOf(user, folder);
  std::vector<std::string> ids;
  if (!fs::is_directory(place)) {
    if (Lower(folder) == "inbox") return ids;  // nothing has come yet
    throw Failure{kNoFolder, folder};
  }
  for (const auto& entry : fs::directory_iterator(place)) {
    const std::string name = Utf8From(entry.path().filename());
    if (name.front() != '.') ids.push_back(Lower(folder) + "/" + name);
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

Message MailDirectory::Read(const std::string& user, const std::string& id) const {
  const fs::path directory = MessageAt(user, id);
  std::ifstream file(directory / "message.txt", std::ios::binary);
  if (!file) throw Failure{kNoMessage, id};
  Message message;
  for (std::string line; std::getline(file, line) && !line.empty();) {
    const auto colon = line.find(": ");
    if (colon == std::string::npos) continue;
    TakeLine(directory, line.substr(0, colon), line.substr(colon + 2), message);
  }
  message.text = {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  return message;
}

bool MailDirectory::IsUnread(const std::string& user, const std::string& id) const {
  return fs::exists(MessageAt(user, id) / "unread");
}

void MailDirectory::MarkRead(const std::string& user, const std::string& id) const {
  fs::remove(MessageAt(user, id) / "unread");
}

void MailDirectory::Delete(const std::string& user, const std::string& id) const {
  // Renamed first, so that nobody sees half of it.
  const fs::path path = MessageAt(user, id);
  const fs::path half = path.parent_path() / PathFrom("." + Utf8From(path.filename()));
  fs::rename(path, half);
  fs::remove_all(half);
}

void MailDirectory::Move(const std::string& user, const std::string& id,
                         const std::string& folder) const {
  const fs::path path = MessageAt(user, id);
  const fs::path target = FolderOf(user, folder);
  if (!fs::is_directory(target)) throw Failure{kNoFolder, folder};
  fs::rename(path, target / path.filename());
}

std::vector<std::string> MailDirectory::Books() const {
  std::vector<std::string> books;
  if (fs::exists(root_ / "book.txt")) books.emplace_back(kBook);
  books.emplace_back(kUsers);
  return books;
}

std::vector<Entry> MailDirectory::Entries(const std::string& book, std::size_t from,
                                          std::size_t most) const {
  if (book == kBook) return BookEntries(from, most);
  if (book != kUsers) throw Failure{kNoBook, book};
  const auto all = UserEntries();
  const auto begin = all.begin() + static_cast<std::ptrdiff_t>(std::min(from, all.size()));
  const auto left = static_cast<std::size_t>(all.end() - begin);
  return {begin, begin + static_cast<std::ptrdiff_t>(std::min(most, left))};
}

std::vector<Entry> MailDirectory::BookEntries(std::size_t from, std::size_t most) const {
  std::vector<Entry> entries;
  std::ifstream file(root_ / "book.txt", std::ios::binary);
  std::size_t number = 0;
  for (std::string line; entries.size() < most && std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || number++ < from) continue;
    const bool isGroup = line.front() == '*';
    const auto party = PartyFrom(0, line.substr(isGroup ? 1 : 0));
    entries.push_back({party.name, party.address, isGroup});
  }
  return entries;
}

std::vector<Entry> MailDirectory::UserEntries() const {
  std::vector<Entry> entries;
  for (const auto& entry : fs::directory_iterator(root_)) {
    const std::string name = Utf8From(entry.path().filename());
    if (entry.is_directory() && name.front() != '.') entries.push_back({name, name, false});
  }
  std::sort(entries.begin(), entries.end(),
            [](const Entry& left, const Entry& right) { return left.name < right.name; });
  return entries;
}

}  // namespace sample
