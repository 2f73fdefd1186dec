// Reads a stored message as POP3 sends it: lines end in CR LF, and a line that begins with a dot
// has it doubled (RFC 1939 3). The line "." that ends the reply is not part of it.
//
// A file whose first line ends in CR LF is sent byte for byte, whatever else is in it. In any other
// file each bare LF is sent as CR LF. A last line without an end gets one.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "Outbox.h"
#include "UniqueFd.h"

namespace mailhost {

class MessageReader : public ByteSource {
 public:
  static constexpr std::uint64_t kAllLines = std::numeric_limits<std::uint64_t>::max();

  // Stops after the header, its blank line and `bodyLines` lines of the body.
  explicit MessageReader(UniqueFd file, std::uint64_t bodyLines = kAllLines)
      : file_(std::move(file)), linesLeft_(bodyLines) {}

  // A read error ends the message early.
  bool Read(std::string& out) override;

  // The size of the message as it is sent, before dots are doubled.
  static std::uint64_t WireSize(int file, std::uint64_t fileSize);

 private:
  enum class LineEnds { kUnknown, kCrLf, kLf };

  // Appends the lines of `bytes`; false when the lines asked for are complete.
  bool Encode(std::string_view bytes, std::string& out);
  // Counts a line that is complete; false when it was the last one wanted.
  bool CountLine(std::size_t length);

  UniqueFd file_;
  std::uint64_t linesLeft_;
  LineEnds lineEnds_ = LineEnds::kUnknown;
  std::size_t chunk_ = 0;
  std::size_t lineLength_ = 0;  // bytes of the line seen so far, line end excepted
  bool afterCr_ = false;
  bool inBody_ = false;
};

}  // namespace mailhost
