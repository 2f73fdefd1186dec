#include "backends/mhs/MhsNames.h"

#include <algorithm>
#include <random>

#include "codec/FileName.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::size_t kBase = 8;
constexpr std::size_t kExtension = 3;

// Of plain characters only, as they come out of a received name that needs no cleaning.
bool IsPlain(std::string_view name, std::size_t most) {
  const auto file = std::string(name) + ".X";
  return !name.empty() && name.size() <= most && name.find(' ') == std::string_view::npos &&
         CleanFileName(file) == file;
}

}  // namespace

std::string RandomMhsName() {
  constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  std::random_device source;
  std::uniform_int_distribution<std::size_t> index(0, kCharacters.size() - 1);
  std::string name;
  for (std::size_t i = 0; i < kBase; ++i) name += kCharacters[index(source)];
  return name;
}

bool IsParcelName(std::string_view name) {
  const auto dot = name.find('.');
  return IsPlain(name.substr(0, dot), kBase) &&
         (dot == std::string_view::npos || IsPlain(name.substr(dot + 1), kExtension));
}

bool IsDirectoryName(std::string_view name) {
  constexpr std::string_view kForbidden = "/\\:*?\"<>|";
  return !name.empty() && name.back() != '.' && name.back() != ' ' &&
         std::none_of(name.begin(), name.end(), [&](char c) {
           return (c >= 0 && c < ' ') || kForbidden.find(c) != std::string_view::npos;
         });
}

bool IsMessageName(std::string_view name) {
  const auto upper = UpperAscii(name);
  return IsDirectoryName(name) && !upper.starts_with(kOwnFiles) && !upper.ends_with(kUnfinished);
}

}  // namespace quillon
