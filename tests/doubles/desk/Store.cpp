#include "desk/Store.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>

#include "core/Text.h"
#include "desk/MessageFile.h"

namespace desk {

namespace fs = std::filesystem;

fs::path Store::Place() {
  const char* place = std::getenv("QUILLON_DESK");
  return place != nullptr && *place != '\0' ? fs::path(place) : fs::path("C:\\QuillonDesk");
}

Store::Store(fs::path place) : place_(std::move(place)), process_(std::random_device{}() & 0xFFFU) {
  MakeIfMissing();
}

std::string DateNow() {
  const std::time_t now = std::time(nullptr);
  char text[32];
  std::strftime(text, sizeof text, "%Y/%m/%d %H:%M", std::localtime(&now));
  return text;
}

// In the order in which they are given out, and different in every program: microseconds, and a
// number of this Store.
std::string Store::NewId() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto ticks = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
  lastId_ = std::max(lastId_ + 1, static_cast<std::uint64_t>(ticks));
  char text[40];
  std::snprintf(text, sizeof text, "%014llX%03X", static_cast<unsigned long long>(lastId_),
                static_cast<unsigned>(process_));
  return text;
}

std::vector<std::string> Store::MessageIds(const Folder& folder) const {
  std::vector<std::string> ids;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder.path / "messages")) {
    ids.push_back(Utf8FromPath(entry.path().filename()));
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

// An identifier comes from a client, and is to be no way out of the folder.
bool Store::Has(const Folder& folder, std::string_view id) const {
  return !id.empty() && id.find_first_not_of("0123456789ABCDEF") == std::string_view::npos &&
         fs::exists(folder.path / "messages" / id);
}

// A folder of the same name may have come where another was.
bool Store::IsStillThere(const Folder& folder) {
  const std::optional<PlainFile> file = ReadPlainFile(folder.path / "folder.txt");
  return file && file->Value("id") == folder.id;
}

std::optional<Store::Found> Store::Find(std::string_view mailbox, std::string_view id) const {
  if (!lastFolder_ || lastFolder_->mailbox != mailbox || !Has(*lastFolder_, id) ||
      !IsStillThere(*lastFolder_)) {
    std::vector<Folder> folders{Root(mailbox)};
    lastFolder_.reset();
    while (!folders.empty() && !lastFolder_) {
      const Folder folder = folders.back();
      folders.pop_back();
      if (Has(folder, id)) lastFolder_ = folder;
      for (Folder& below : Subfolders(folder)) folders.push_back(std::move(below));
    }
  }
  if (!lastFolder_) return std::nullopt;
  return Found{*lastFolder_, lastFolder_->path / "messages" / id};
}

std::optional<Message> Store::Read(std::string_view mailbox, std::string_view id) const {
  const std::optional<Found> found = Find(mailbox, id);
  if (!found) return std::nullopt;
  std::optional<Message> message = ReadMessage(found->path);
  if (message) {
    message->id = id;
    message->folderId = found->folder.id;
  }
  return message;
}

std::string Store::Add(const Folder& folder, const Message& message) {
  std::string id = NewId();
  const fs::path making = place_ / "making" / id;
  fs::create_directories(making);
  try {
    WriteMessage(making, message);
    Rename(making, folder.path / "messages" / id);
  } catch (...) {
    std::error_code ignored;
    fs::remove_all(making, ignored);
    throw;
  }
  return id;
}

bool Store::Change(std::string_view mailbox, const Message& message) {
  const std::optional<Found> found = Find(mailbox, message.id);
  if (found) WriteMessage(found->path, message);
  return found.has_value();
}

bool Store::Remove(std::string_view mailbox, std::string_view id) {
  const std::optional<Found> found = Find(mailbox, id);
  if (!found) return false;
  const fs::path going = place_ / "making" / NewId();  // it goes at once, as it came
  Rename(found->path, going);
  fs::remove_all(going);
  return true;
}

bool Store::Move(std::string_view mailbox, std::string_view id, const Folder& folder) {
  const std::optional<Found> found = Find(mailbox, id);
  if (!found) return false;
  const fs::path target = folder.path / "messages" / id;
  if (target != found->path) Rename(found->path, target);
  return true;
}

std::optional<std::string> Store::Copy(std::string_view mailbox, std::string_view id,
                                       const Folder& folder) {
  const std::optional<Message> message = Read(mailbox, id);
  if (!message) return std::nullopt;
  return Add(folder, *message);
}

std::optional<std::string> Store::Call(std::string_view name, std::string_view arguments) {
  const int count = ++calls_[std::string(name)];
  std::string line(name);
  if (!arguments.empty()) line += " " + OnOneLine(arguments);
  line += '\n';
  AppendBytes(place_ / "calls.txt", line);
  const std::optional<std::string> word = Word(std::string(name) + "#" + std::to_string(count));
  return word ? word : Word(name);
}

std::optional<std::string> Store::Word(std::string_view name) const {
  const std::string text = ReadBytes(place_ / "faults.txt").value_or("");
  for (const std::string& line : quillon::Split(text, "\n")) {
    const std::string_view trimmed =
        quillon::Trim(std::string_view(line).substr(0, line.find_last_not_of('\r') + 1));
    const std::size_t blank = trimmed.find(' ');
    if (trimmed.substr(0, blank) != name) continue;
    return blank == std::string_view::npos ? "" : quillon::TrimmedCopy(trimmed.substr(blank));
  }
  return std::nullopt;
}

std::optional<std::string> Store::Dialog() const {
  const std::optional<std::string> text = ReadBytes(place_ / "dialog.txt");
  if (!text) return std::nullopt;
  return quillon::TrimmedCopy(text->substr(0, text->find_first_of("\r\n")));
}

}  // namespace desk
