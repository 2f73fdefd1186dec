// The header lines of a received message and the header record that they fill.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "codec/HeaderTable.h"
#include "core/ShortBool.h"

namespace quillon {

// Without one CR LF, LF or CR at the end.
std::string_view StripLineEnd(std::string_view text);

// Stores one field into the record of that index; unknown names and indexes beyond the table are
// ignored. A continuation is added to the end of most fields, without a separator; a subject keeps
// only its last line.
//
// The reply address comes from three fields: "From" and "Return-Path" overwrite it whenever they
// come, "Reply-To" fills it only while it is empty. This is intended, and means that the order of
// the lines decides.
void StoreHeaderField(HeaderTable& table, size_t index, std::string_view fieldName,
                      std::string_view value, ShortBool isContinuation);

// Cuts the lines of one header after another into fields and stores them. A line that begins with a
// blank or a tab continues the field before it; a line without ":" is skipped together with its
// continuations.
class HeaderLineReader {
 public:
  // `line` with or without its line end. Dates are stored as `dateFormat` asks for.
  void Store(HeaderTable& table, size_t index, std::string_view line, std::string_view dateFormat);

  // To be called between two headers, so that the first line of one cannot continue the last field
  // of the other.
  void Reset() { fieldName_.clear(); }

 private:
  std::string fieldName_;  // upper case; empty when a continuation belongs to nothing
};

}  // namespace quillon
