#include "internet/ServerSections.h"

#include <algorithm>
#include <utility>

#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kPrefix = "Server ";
constexpr std::string_view kAllOthers = "*";

struct Mark {
  SecretProtector::Scope scope;
  std::string_view text;
};
constexpr Mark kMarks[] = {
    {SecretProtector::Scope::kAccount, "{account}"},
    {SecretProtector::Scope::kMachine, "{machine}"},
};

const Mark* MarkOf(std::string_view written) {
  const auto* const mark = std::find_if(std::begin(kMarks), std::end(kMarks), [&](const Mark& one) {
    return written.starts_with(one.text);
  });
  return mark == std::end(kMarks) ? nullptr : mark;
}

std::string SectionName(std::string_view name) {
  return std::string(kPrefix) + std::string(Trim(name));
}

[[noreturn]] void Wrong(const ServerSections::Place& place, const std::string& what) {
  throw ServerError(error_code::kInvalidValue,
                    "In the file " + place.file + ", section [" + place.section + "]: " + what);
}

std::string NotTaken(const ServerKey& key, const std::string& value) {
  const auto shown = key.isSecret ? std::string() : " \"" + value + "\"";
  return std::string(key.name) + " cannot be" + shown + ": it is " + std::string(key.form) + ".";
}

void AddPlaces(std::vector<ServerSections::Place>& places, std::string_view name,
               const std::string& file, const std::vector<clsINIUtilities::Section>& sections) {
  const auto wanted = SectionName(name);
  // Of two of one name the first counts, as for every other key of the file.
  const auto found = std::find_if(sections.begin(), sections.end(), [&](const auto& section) {
    return EqualsIgnoreCase(section.name, wanted);
  });
  if (found != sections.end()) places.push_back({file, found->name, found->entries});
}

}  // namespace

std::vector<clsINIUtilities*> ServerSections::Files() const {
  std::vector<clsINIUtilities*> files{&own_};
  if (machine_ != nullptr && machine_->Path() != own_.Path()) files.push_back(machine_);
  return files;
}

std::vector<ServerSections::Place> ServerSections::Find(std::string_view host) {
  std::vector<std::pair<std::string, std::vector<clsINIUtilities::Section>>> files;
  for (auto* const file : Files()) files.emplace_back(file->Path(), file->ReadSections());
  std::vector<Place> places;
  const auto name = Trim(host);
  for (const auto one : {name, kAllOthers}) {
    if (one.empty() || (one == kAllOthers && !places.empty() && name == kAllOthers)) continue;
    for (const auto& [path, sections] : files) AddPlaces(places, one, path, sections);
  }
  return places;
}

ServerSection ServerSections::For(std::string_view host) {
  const auto places = Find(host);
  return places.empty() ? ServerSection() : Read(places.front());
}

ServerSection ServerSections::Read(const Place& place) {
  ServerSection section;
  // Backwards, so that the first of two lines with one key counts.
  for (auto entry = place.entries.rbegin(); entry != place.entries.rend(); ++entry) {
    const auto* const key = FindServerKey(entry->key);
    if (key == nullptr) Wrong(place, "there is no key \"" + entry->key + "\" for servers.");
    const auto value = key->isSecret ? Reveal(place, *key, entry->value) : entry->value;
    if (!value.empty() && !key->set(section, value)) Wrong(place, NotTaken(*key, value));
  }
  return section;
}

std::optional<ServerSections::Scope> ServerSections::ScopeOf(std::string_view written) {
  const auto* const mark = MarkOf(written);
  if (mark == nullptr) return std::nullopt;
  return mark->scope;
}

std::string ServerSections::Reveal(const Place& place, const ServerKey& key,
                                   const std::string& written) {
  const auto* const mark = MarkOf(written);
  if (mark == nullptr) return written;
  auto secret = protector_.Reveal(std::string_view(written).substr(mark->text.size()));
  if (secret) return *std::move(secret);
  const bool account = mark->scope == Scope::kAccount;
  Wrong(place, std::string(key.name) + " is encrypted for " +
                   (account ? "another account" : "another machine") +
                   ". Set it again with quillon.exe /Configure, " +
                   (account ? "as the account that runs the scripts or with /Machine."
                            : "with /Machine, on this machine."));
}

std::string ServerSections::FileFor(Scope scope) const {
  if (scope == Scope::kAccount) return own_.Path();
  return machine_ != nullptr ? machine_->Path() : std::string();
}

std::string ServerSections::Put(std::string_view name, std::string_view key,
                                const std::string& value, Scope scope) {
  auto* const file = scope == Scope::kMachine ? machine_ : &own_;
  if (file == nullptr) {
    throw ServerError(error_code::kFileAccess,
                      "There is no configuration file for the whole machine: other users can write "
                      "in the directory of quillon.exe.");
  }
  const Place place{file->Path(), SectionName(name), {}};
  const auto* const known = FindServerKey(key);
  if (known == nullptr) Wrong(place, "there is no key \"" + std::string(key) + "\" for servers.");
  ServerSection scratch;
  if (!value.empty() && !known->set(scratch, value)) Wrong(place, NotTaken(*known, value));
  if (!Write(*file, place.section, *known, value, scope)) {
    throw ServerError(error_code::kFileAccess, "The file " + file->Path() +
                                                   " cannot be written, or the system does not "
                                                   "encrypt.");
  }
  return file->Path();
}

bool ServerSections::Write(clsINIUtilities& file, std::string_view section, const ServerKey& key,
                           const std::string& value, Scope scope) {
  if (value.empty()) return file.Remove(section, key.name);
  if (!key.isSecret) return file.WriteString(section, key.name, value);
  const auto hidden = protector_.Protect(value, scope);
  const auto* const mark = std::find_if(std::begin(kMarks), std::end(kMarks),
                                        [&](const Mark& one) { return one.scope == scope; });
  return hidden && file.WriteString(section, key.name, std::string(mark->text) + *hidden);
}

void ServerSections::ReplaceRefreshToken(const OAuthAccount& account,
                                         const std::string& refreshToken) {
  const auto* const key = FindServerKey("RefreshToken");
  for (auto* const file : Files()) {
    for (const auto& section : file->ReadSections()) {
      if (!EqualsIgnoreCase(section.name.substr(0, kPrefix.size()), kPrefix)) continue;
      for (const auto& entry : section.entries) {
        if (!EqualsIgnoreCase(entry.key, key->name)) continue;
        const Place place{file->Path(), section.name, section.entries};
        try {
          if (Read(place).oauth != account) continue;
        } catch (const ServerError&) {
          continue;  // another one's, or in need of somebody's hands
        }
        Write(*file, section.name, *key, refreshToken,
              ScopeOf(entry.value).value_or(Scope::kAccount));
      }
    }
  }
}

}  // namespace quillon
