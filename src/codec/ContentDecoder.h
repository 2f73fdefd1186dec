// Decodes the body of a part, line by line, into a sink. The line end before a boundary belongs to
// the boundary, so a line end goes out only when another line follows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "codec/Base64.h"
#include "codec/ByteSink.h"

namespace quillon {

class ContentDecoder {
 public:
  // `encoding` is one of mime_encoding.
  ContentDecoder(std::int16_t encoding, ByteSink& sink);

  // A line without its line end, or a piece of one.
  void Line(std::string_view line, bool endsLine);

  // Passes on what is held back; to be called once, at the end.
  void Finish();

 private:
  void PlainLine(std::string_view line, bool endsLine);
  void QuotedPrintableLine(std::string_view line, bool endsLine);
  void UuLine(std::string_view line);
  void Base64Line(std::string_view line, bool endsLine);
  void DecodeBase64();
  void StartLine();
  void Flush();

  const std::int16_t encoding_;
  ByteSink& sink_;
  std::string out_;
  std::string held_;           // encoded text that waits for more
  bool breakPending_ = false;  // a line end that goes out with the next line
  bool ended_ = false;         // of uuencoded data
  Base64Decoder base64_;
};

// Decodes one line of uuencoded data and adds it to `out`; false at the line that ends the data.
bool DecodeUuLine(std::string_view line, std::string& out);

}  // namespace quillon
