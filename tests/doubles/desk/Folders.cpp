// The folders of a Store.
#include <algorithm>
#include <cctype>

#include "core/Text.h"
#include "desk/Store.h"

namespace desk {

namespace fs = std::filesystem;

namespace {

// A directory's name for a folder that may be called anything; folder.txt has its real name.
std::string PlainName(std::string_view name) {
  std::string plain;
  for (const char c : name.substr(0, 60)) {
    plain += std::isalnum(static_cast<unsigned char>(c)) != 0 || c == ' ' || c == '-' ? c : '_';
  }
  // Neither "CON" nor a blank at the end, which Windows does not take for names.
  return plain.size() <= 4 || plain.back() == ' ' ? plain + "_" : plain;
}

std::optional<Folder> ReadFolder(const fs::path& path, const Folder& parent) {
  const std::optional<PlainFile> file = ReadPlainFile(path / "folder.txt");
  if (!file) return std::nullopt;
  return Folder{parent.mailbox, file->Value("id"), parent.id, file->Value("name"), path};
}

void WriteFolder(const Folder& folder) {
  PlainFile file;
  file.Add("name", folder.name);
  file.Add("id", folder.id);
  ReplacePlainFile(folder.path / "folder.txt", file);
}

bool IsIn(const fs::path& inner, const fs::path& outer) {
  const auto [end, ignored] = std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end());
  return end == outer.end();
}

}  // namespace

fs::path Store::Mailbox(std::string_view mailbox) const {
  if (mailbox.empty() || mailbox.find_first_of("/\\:") != std::string_view::npos ||
      mailbox.front() == '.') {
    throw StoreError("no such mailbox");
  }
  return place_ / "mailboxes" / PathFromUtf8(mailbox);
}

Folder Store::Root(std::string_view mailbox) const {
  Folder none;
  none.mailbox = mailbox;
  std::optional<Folder> root = ReadFolder(Mailbox(mailbox) / "folders", none);
  if (!root) throw StoreError("no such mailbox");
  return *root;
}

std::vector<Folder> Store::Subfolders(const Folder& folder) const {
  std::vector<Folder> folders;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder.path / "folders")) {
    if (std::optional<Folder> below = ReadFolder(entry.path(), folder)) folders.push_back(*below);
  }
  std::sort(folders.begin(), folders.end(),
            [](const Folder& a, const Folder& b) { return a.name < b.name; });
  return folders;
}

std::optional<Folder> Store::Subfolder(const Folder& folder, std::string_view name) const {
  for (const Folder& below : Subfolders(folder)) {
    if (quillon::EqualsIgnoreCase(below.name, name)) return below;
  }
  return std::nullopt;
}

Folder Store::KnownFolder(std::string_view mailbox, std::string_view name) {
  const Folder root = Root(mailbox);
  const std::optional<Folder> folder = Subfolder(root, name);
  return folder ? *folder : AddFolder(root, name);
}

std::optional<Folder> Store::FindFolder(std::string_view mailbox, std::string_view id) const {
  std::vector<Folder> folders{Root(mailbox)};
  while (!folders.empty()) {
    const Folder folder = folders.back();
    folders.pop_back();
    if (folder.id == id) return folder;
    for (Folder& below : Subfolders(folder)) folders.push_back(std::move(below));
  }
  return std::nullopt;
}

fs::path Store::FreePlace(const Folder& parent, std::string_view name) const {
  const fs::path plain = parent.path / "folders" / PlainName(name);
  fs::path place = plain;
  for (int number = 2; fs::exists(place); ++number) {
    place = plain;
    place += "~" + std::to_string(number);
  }
  return place;
}

std::string Store::CheckedName(const Folder& parent, std::string_view name) const {
  if (name.empty()) throw StoreError("a folder has a name");
  if (Subfolder(parent, name)) throw StoreError("there is a folder of that name");
  return std::string(name);
}

Folder Store::MakeFolder(const fs::path& path, const Folder& parent, std::string_view name) {
  Folder folder{parent.mailbox, NewId(), parent.id, std::string(name), path};
  fs::create_directories(path / "messages");
  fs::create_directories(path / "folders");
  WriteFolder(folder);
  return folder;
}

Folder Store::AddFolder(const Folder& parent, std::string_view name) {
  const std::string checked = CheckedName(parent, name);
  return MakeFolder(FreePlace(parent, checked), parent, checked);
}

Folder Store::RenameFolder(const Folder& folder, std::string_view name) {
  const std::optional<Folder> parent = FindFolder(folder.mailbox, folder.parentId);
  if (!parent) throw StoreError("a root folder keeps its name");
  Folder renamed = folder;
  renamed.name =
      quillon::EqualsIgnoreCase(folder.name, name) ? std::string(name) : CheckedName(*parent, name);
  WriteFolder(renamed);
  return renamed;
}

Folder Store::MoveFolder(const Folder& folder, const Folder& parent, std::string_view name) {
  if (folder.parentId.empty() || IsIn(parent.path, folder.path)) {
    throw StoreError("a folder cannot move into itself");
  }
  Folder moved = folder;
  moved.name = CheckedName(parent, name.empty() ? folder.name : name);
  moved.mailbox = parent.mailbox;
  moved.parentId = parent.id;
  moved.path = FreePlace(parent, moved.name);
  Rename(folder.path, moved.path);
  WriteFolder(moved);
  return moved;
}

void Store::CopyContents(const Folder& from, const Folder& to) {
  for (const std::string& id : MessageIds(from)) Copy(from.mailbox, id, to);
  for (const Folder& below : Subfolders(from)) CopyContents(below, AddFolder(to, below.name));
}

Folder Store::CopyFolder(const Folder& folder, const Folder& parent, std::string_view name) {
  if (IsIn(parent.path, folder.path)) throw StoreError("a folder cannot be copied into itself");
  Folder copy = AddFolder(parent, name.empty() ? folder.name : name);
  CopyContents(folder, copy);
  return copy;
}

void Store::RemoveFolder(const Folder& folder) {
  if (folder.parentId.empty()) throw StoreError("a root folder stays");
  const fs::path going = place_ / "making" / NewId();
  Rename(folder.path, going);
  fs::remove_all(going);
}

}  // namespace desk
