// The configuration file: sections of key = value lines. Every put is written through at once, and
// everything that stands in the file stays as it was: other keys, comments, order, line ends.
//
// The file is read anew at every access, so that a change made by an editor or another process
// counts. It is UTF-8; a file of an older program in the ANSI code page is read byte for byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail/MailSystemId.h"

namespace quillon {

class FileSystem;

class clsINIUtilities {
 public:
  clsINIUtilities(FileSystem& files, std::string path);

  const std::string& Path() const noexcept { return path_; }

  // The value with enclosing blanks and quotes removed; the default when section or key is missing.
  std::string ReadString(std::string_view section, std::string_view key,
                         std::string_view defaultValue = {});
  // Writers return whether the file could be written. Line breaks in a value become blanks.
  bool WriteString(std::string_view section, std::string_view key, std::string_view value);
  bool Remove(std::string_view section, std::string_view key);

  struct Entry {
    std::string key;
    std::string value;  // as ReadString gives it
  };
  struct Section {
    std::string name;
    std::vector<Entry> entries;
  };
  // The whole file, in its order.
  std::vector<Section> ReadSections();

  // "TRUE", "YES", "-1" and "1" (in any case) are true, any other text is false.
  bool ReadTrueFalse(std::string_view section, std::string_view key, bool defaultValue);
  bool WriteTrueFalse(std::string_view section, std::string_view key, bool value);

  // The default also for a text that is not a whole number of 32 bits.
  std::int32_t ReadNumber(std::string_view section, std::string_view key,
                          std::int32_t defaultValue);
  bool WriteNumber(std::string_view section, std::string_view key, std::int32_t value);

  // For passwords: hidden from a glance at the file, not protected against somebody who wants to
  // know. A value that was not written by WriteScrambled reads as empty.
  std::string ReadScrambled(std::string_view section, std::string_view key);
  bool WriteScrambled(std::string_view section, std::string_view key, std::string_view value);

  MailSystemId ReadMailSystem(std::string_view section, std::string_view key);
  bool WriteMailSystem(std::string_view section, std::string_view key, MailSystemId system);

  // "NONE", "MIME" or "UUENCODE" for the attachment encodings 0, 2 and 1; another value is written
  // as its number.
  bool WriteAttachmentEncoding(std::string_view section, std::string_view key,
                               std::int16_t encoding);

 private:
  std::optional<std::string> Find(std::string_view section, std::string_view key);
  std::string Load();

  FileSystem& files_;
  std::string path_;
};

}  // namespace quillon
