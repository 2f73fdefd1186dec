// Messages of VIM as records of the server.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "codec/DateTime.h"
#include "codec/HeaderTable.h"
#include "ports/LocalClock.h"
#include "ports/Vim.h"

namespace quillon {

// What the property Folder names.
struct VimFolder {
  explicit VimFolder(const std::string& name);

  std::string container;  // its name; empty: the inbox
  bool isLog = false;     // the messages that were sent, which are enumerated out of the inbox
};

// The local date, by the clock's present distance from Greenwich; no value for one that is unknown
// or does not exist.
std::optional<DateTime> LocalDateOf(const VimDate& date, const LocalClock& clock);

// By a dateFormat property; VIM has no text of its own, so "NATIVE" is "General Date". Empty when
// there is no date.
std::string VimDateText(const std::optional<DateTime>& date, const std::string& dateFormat);

// As a unique identifier, and back.
std::string VimReferenceText(VimReference reference);
std::optional<VimReference> ParseVimReference(const std::string& text);

// A record without number, date and status.
HeaderRecord VimRecordOf(const VimEnvelope& envelope, const VimHeader& header,
                         std::size_t attachments);

}  // namespace quillon
