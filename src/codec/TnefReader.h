// What a file of the Transport Neutral Encapsulation Format ([MS-OXTNEF]), mostly "winmail.dat",
// holds: the texts and attachments of a message, as parts of the file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "codec/FileBytes.h"

namespace quillon {

class TextReader;

struct TnefAttachment {
  std::string name;               // empty: it has none
  std::optional<FileBytes> data;  // none: the file has only a reference
  bool isMessage = false;         // the data is such a file itself
};

struct TnefMessage {
  static constexpr std::size_t kMaximumAttachments = 10000;

  // False when the file is cut off or was changed, or when more is in it than texts and files: an
  // appointment, a contact.
  bool isWhole = true;
  int codePage = 0;                      // of text in bytes; 0: unknown
  std::optional<FileBytes> text;         // in bytes
  std::optional<FileBytes> unicodeText;  // in UTF-16, low byte first
  std::optional<FileBytes> richText;     // as DecompressRtf takes it
  std::optional<FileBytes> html;
  int htmlCodePage = 0;
  std::vector<TnefAttachment> attachments;
};

// Reads on behind what makes no sense, as far as it can. None when the bytes are no such file.
std::optional<TnefMessage> ReadTnef(FileBytes bytes, const TextReader& reader);

// The name of the set that has the number of a code page of Windows; empty for 0.
std::string NameOfCodePage(int codePage);

}  // namespace quillon
