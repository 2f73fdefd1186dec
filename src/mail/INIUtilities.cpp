#include "mail/INIUtilities.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "core/ServerError.h"
#include "core/Text.h"
#include "core/Value.h"
#include "core/WholeFile.h"
#include "mail/MailSystemKeyword.h"
#include "ports/FileSystem.h"

namespace quillon {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kScrambleMark = "Q1:";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

std::string_view Stripped(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string OneLine(std::string_view value) {
  std::string line(value);
  for (char& c : line) {
    if (c == '\r' || c == '\n' || c == '\0') c = ' ';
  }
  return line;
}

// Where the value of a key stands in the text of a file, or where a new key of the section belongs.
struct Place {
  bool sectionFound = false;
  bool keyFound = false;
  std::size_t lineStart =
      0;  // of the key's line, or the end of the section's last line that is not blank
  std::size_t lineEnd = 0;  // after its line end
  std::string_view value;
};

std::size_t AfterLine(std::string_view text, std::size_t from) {
  const auto end = text.find('\n', from);
  return end == std::string_view::npos ? text.size() : end + 1;
}

Place Locate(std::string_view text, std::string_view section, std::string_view key) {
  Place place;
  bool inside = false;
  for (std::size_t at = text.starts_with("\xEF\xBB\xBF") ? 3 : 0; at < text.size();) {
    const auto next = AfterLine(text, at);
    const auto line = Stripped(text.substr(at, next - at));
    if (line.starts_with('[')) {
      if (inside) return place;
      const auto name = Stripped(line.substr(1, line.find(']') - 1));
      inside = EqualsIgnoreCase(name, section);
      place.sectionFound = inside;
    } else if (inside && !line.starts_with(';')) {
      const auto equals = line.find('=');
      if (equals != std::string_view::npos &&
          EqualsIgnoreCase(Stripped(line.substr(0, equals)), key)) {
        return {true, true, at, next, Stripped(line.substr(equals + 1))};
      }
    }
    if (inside && !line.empty()) place.lineStart = place.lineEnd = next;
    at = next;
  }
  return place;
}

std::string_view Unquoted(std::string_view value) {
  const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                      (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

// A value that would lose its blanks or quotes on reading is written in quotes.
std::string Quoted(const std::string& value) {
  const bool asItStands = Unquoted(Stripped(value)) == value;
  return asItStands ? value : "\"" + value + "\"";
}

// Each byte is mixed with a key byte that depends on its position and on the byte before it.
std::uint8_t KeyByte(std::size_t position, std::uint8_t previous) {
  return static_cast<std::uint8_t>(0x5B + 37 * position + 3U * previous);
}

bool Write(FileSystem& files, const std::string& path, std::string_view text) {
  // Through a second file, so that a full disk does not cost the settings that are there.
  const std::string fresh = path + ".new";
  const auto bytes = std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  if (!WriteWholeFile(files, fresh, bytes)) return false;
  if (files.RenameFile(fresh, path)) return true;
  files.RemoveFile(fresh);
  return false;
}

}  // namespace

clsINIUtilities::clsINIUtilities(FileSystem& files, std::string path)
    : files_(files), path_(std::move(path)) {}

std::string clsINIUtilities::Load() {
  const auto bytes = ReadWholeFile(files_, path_);
  return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
}

std::optional<std::string> clsINIUtilities::Find(std::string_view section, std::string_view key) {
  const auto text = Load();
  const auto place = Locate(text, section, key);
  if (!place.keyFound) return std::nullopt;
  return std::string(Unquoted(place.value));
}

std::string clsINIUtilities::ReadString(std::string_view section, std::string_view key,
                                        std::string_view defaultValue) {
  return Find(section, key).value_or(std::string(defaultValue));
}

bool clsINIUtilities::WriteString(std::string_view section, std::string_view key,
                                  std::string_view value) {
  auto text = Load();
  const auto place = Locate(text, section, key);
  const auto line = std::string(key) + "=" + Quoted(OneLine(value)) + "\r\n";
  if (place.sectionFound) {
    const bool lineOpen =
        !place.keyFound && place.lineStart > 0 && text[place.lineStart - 1] != '\n';
    text.replace(place.lineStart, place.lineEnd - place.lineStart, (lineOpen ? "\r\n" : "") + line);
  } else {
    if (!text.empty() && text.back() != '\n') text += "\r\n";
    text += "[" + std::string(section) + "]\r\n" + line;
  }
  return Write(files_, path_, text);
}

bool clsINIUtilities::Remove(std::string_view section, std::string_view key) {
  auto text = Load();
  const auto place = Locate(text, section, key);
  if (!place.keyFound) return true;
  text.erase(place.lineStart, place.lineEnd - place.lineStart);
  return Write(files_, path_, text);
}

std::vector<clsINIUtilities::Section> clsINIUtilities::ReadSections() {
  const auto loaded = Load();
  auto text = std::string_view(loaded);
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  std::vector<Section> sections;
  while (!text.empty()) {
    const auto next = AfterLine(text, 0);
    const auto line = Stripped(text.substr(0, next));
    text.remove_prefix(next);
    const auto equals = line.find('=');
    if (line.starts_with('[')) {
      sections.push_back({std::string(Stripped(line.substr(1, line.find(']') - 1))), {}});
    } else if (!sections.empty() && !line.starts_with(';') && equals != std::string_view::npos) {
      sections.back().entries.push_back({std::string(Stripped(line.substr(0, equals))),
                                         std::string(Unquoted(Stripped(line.substr(equals + 1))))});
    }
  }
  return sections;
}

bool clsINIUtilities::ReadTrueFalse(std::string_view section, std::string_view key,
                                    bool defaultValue) {
  const auto value = Find(section, key);
  if (!value) return defaultValue;
  constexpr std::array<std::string_view, 4> kTrueTexts{"TRUE", "YES", "-1", "1"};
  return std::any_of(kTrueTexts.begin(), kTrueTexts.end(), [&](std::string_view text) {
    return EqualsIgnoreCase(Stripped(*value), text);
  });
}

bool clsINIUtilities::WriteTrueFalse(std::string_view section, std::string_view key, bool value) {
  return WriteString(section, key, value ? "TRUE" : "FALSE");
}

std::int32_t clsINIUtilities::ReadNumber(std::string_view section, std::string_view key,
                                         std::int32_t defaultValue) {
  const auto value = Find(section, key);
  if (!value) return defaultValue;
  try {
    return ToInt32(Value(*value));
  } catch (const ConversionError&) {
    return defaultValue;
  }
}

bool clsINIUtilities::WriteNumber(std::string_view section, std::string_view key,
                                  std::int32_t value) {
  return WriteString(section, key, std::to_string(value));
}

std::string clsINIUtilities::ReadScrambled(std::string_view section, std::string_view key) {
  const auto stored = Find(section, key).value_or(std::string());
  auto digits = std::string_view(stored);
  if (!digits.starts_with(kScrambleMark) || (digits.size() - kScrambleMark.size()) % 2 != 0) {
    return {};
  }
  digits.remove_prefix(kScrambleMark.size());
  std::string value;
  std::uint8_t previous = 0;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const auto high = kHexDigits.find(digits[i]);
    const auto low = kHexDigits.find(digits[i + 1]);
    if (high == std::string_view::npos || low == std::string_view::npos) return {};
    const auto mixed = static_cast<std::uint8_t>(high * 16 + low);
    value += static_cast<char>(mixed ^ KeyByte(i / 2, previous));
    previous = mixed;
  }
  return value;
}

bool clsINIUtilities::WriteScrambled(std::string_view section, std::string_view key,
                                     std::string_view value) {
  std::string stored(kScrambleMark);
  std::uint8_t previous = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    previous =
        static_cast<std::uint8_t>(static_cast<unsigned char>(value[i]) ^ KeyByte(i, previous));
    stored += kHexDigits[previous >> 4U];
    stored += kHexDigits[previous & 15U];
  }
  return WriteString(section, key, stored);
}

MailSystemId clsINIUtilities::ReadMailSystem(std::string_view section, std::string_view key) {
  return MailSystemFromKeyword(ReadString(section, key));
}

bool clsINIUtilities::WriteMailSystem(std::string_view section, std::string_view key,
                                      MailSystemId system) {
  return WriteString(section, key, MailSystemKeyword(system));
}

bool clsINIUtilities::WriteAttachmentEncoding(std::string_view section, std::string_view key,
                                              std::int16_t encoding) {
  switch (encoding) {
    case 0:
      return WriteString(section, key, "NONE");
    case 1:
      return WriteString(section, key, "UUENCODE");
    case 2:
      return WriteString(section, key, "MIME");
    default:
      return WriteNumber(section, key, encoding);
  }
}

}  // namespace quillon
