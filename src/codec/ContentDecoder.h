// Decodes the body of a part, line by line, into a sink.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "codec/Base64.h"
#include "codec/ByteSink.h"

namespace quillon {

// What ended the content of a part. The line end before a boundary belongs to the boundary (RFC
// 2046, section 5.1.1), the one before the end of the message to the content.
enum class ContentEnd { Boundary, Message };

class ContentDecoder {
 public:
  // `encoding` is one of mime_encoding; uuencoded lines, which are no encoding of a whole part,
  // pass as they stand.
  ContentDecoder(std::int16_t encoding, ByteSink& sink);

  // A line without its line end, or a piece of one.
  void Line(std::string_view line, bool endsLine);

  // Passes on what is held back; to be called once, at the end.
  void Finish(ContentEnd end);

 private:
  void PlainLine(std::string_view line, bool endsLine);
  void QuotedPrintableLine(std::string_view line, bool endsLine);
  void Base64Line(std::string_view line, bool endsLine);
  void DecodeBase64();
  void StartLine();
  void Flush();

  const std::int16_t encoding_;
  ByteSink& sink_;
  std::string out_;
  std::string held_;           // encoded text that waits for more
  bool breakPending_ = false;  // a line end that goes out when it is known to count
  Base64Decoder base64_;
};

// Decodes one line of uuencoded data and adds it to `out`; false at the line that ends the data.
bool DecodeUuLine(std::string_view line, std::string& out);

}  // namespace quillon
