#include "administration/ConfigureCommand.h"

#include <algorithm>
#include <optional>

#include "core/ServerError.h"
#include "core/Text.h"

namespace quillon {
namespace {

using Scope = SecretProtector::Scope;

constexpr std::string_view kUsage =
    "It is: quillon.exe /Configure NAME [KEY [VALUE]] [/Machine]. A value with blanks stands in "
    "quotation marks.";

bool IsMachineSwitch(std::string_view word) {
  return EqualsIgnoreCase(word, "/Machine") || EqualsIgnoreCase(word, "-Machine");
}

// What could not be read back as the name of a section.
bool IsName(std::string_view name) {
  return !Trim(name).empty() && name.find_first_of("[]\r\n/\\=") == std::string_view::npos;
}

std::string KnownKeys() {
  std::string text = "The keys are";
  for (const auto& key : ServerKeys()) {
    text += (text.ends_with("are") ? " " : ", ") + std::string(key.name);
  }
  return text + ".";
}

std::string Shown(const clsINIUtilities::Entry& entry) {
  const auto* const key = FindServerKey(entry.key);
  // What nobody knows may be a secret whose key is mistyped.
  if (key != nullptr && !key->isSecret) return entry.value;
  if (entry.value.empty()) return {};
  const auto scope = ServerSections::ScopeOf(entry.value);
  if (!scope) return key != nullptr ? "(set, not encrypted)" : "(set)";
  return *scope == Scope::kAccount ? "(set, for one account)" : "(set, for this machine)";
}

bool List(const std::string& name, ServerSections& servers, Console& console) {
  const auto places = servers.Find(name);
  if (places.empty()) {
    console.WriteLine("There is no section [Server " + name + "] yet.");
    console.WriteLine(KnownKeys());
    return false;
  }
  bool first = true;
  for (const auto& place : places) {
    console.WriteLine("[" + place.section + "] in " + place.file +
                      (first ? "" : " (does not hold: the one above goes before it)"));
    first = false;
    for (const auto& entry : place.entries) {
      console.WriteLine("  " + entry.key + "=" + Shown(entry));
    }
  }
  try {
    servers.Read(places.front());
  } catch (const ServerError& error) {
    console.WriteLine(error.Text());
    return false;
  }
  return true;
}

// None when there is none to be had.
std::optional<std::string> ValueOf(const ServerKey& key, const std::vector<std::string>& words,
                                   Console& console) {
  if (words.size() > 2) return words[2];
  if (!key.isSecret) {
    console.WriteLine(std::string(key.name) + " needs a value: " + std::string(key.form) +
                      ". An empty one, \"\", takes the key out.");
    return std::nullopt;
  }
  auto secret = console.ReadSecret(std::string(key.name) + ": ");
  if (secret && !secret->empty()) return secret;
  console.WriteLine("No " + std::string(key.name) +
                    " was given. Redirect the standard input from a file or a program that "
                    "writes it, or start this from a batch file or with \"start /wait\" to be "
                    "asked for it.");
  return std::nullopt;
}

bool Set(const std::vector<std::string>& words, Scope scope, ServerSections& servers,
         Console& console) {
  const auto* const key = FindServerKey(words[1]);
  if (key == nullptr) {
    console.WriteLine("There is no key \"" + words[1] + "\". " + KnownKeys());
    return false;
  }
  const auto value = ValueOf(*key, words, console);
  if (!value) return false;
  try {
    const auto file = servers.Put(words[0], key->name, *value, scope);
    const auto where = " in section [Server " + words[0] + "] of " + file;
    const auto* const whom = scope == Scope::kAccount ? "this account" : "this machine";
    const auto encrypted = key->isSecret ? ", encrypted for " + std::string(whom) : std::string();
    console.WriteLine(std::string(key->name) +
                      (value->empty() ? " is not set any more" : " is set") + where +
                      (value->empty() ? "" : encrypted) + ".");
  } catch (const ServerError& error) {
    console.WriteLine(error.Text());
    return false;
  }
  return true;
}

}  // namespace

bool Configure(const std::vector<std::string>& arguments, ServerSections& servers,
               Console& console) {
  auto words = arguments;
  auto scope = Scope::kAccount;
  if (!words.empty() && IsMachineSwitch(words.back())) {
    scope = Scope::kMachine;
    words.pop_back();
  }
  bool done = false;
  if (words.empty() || words.size() > 3 || !IsName(words[0])) {
    console.WriteLine(std::string(kUsage));
  } else if (words.size() == 1) {
    done = List(words[0], servers, console);
  } else {
    done = Set(words, scope, servers, console);
  }
  console.Show();
  return done;
}

}  // namespace quillon
