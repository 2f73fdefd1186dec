// Decodes the uuencoded (or "begin-base64") data of one file, or of several that continue each
// other, into one output.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "codec/Base64.h"
#include "codec/BlockIo.h"
#include "codec/UuFraming.h"

namespace quillon {

class UuFileDecoder {
 public:
  // Moves the reader behind its first "begin " line; no value when it has none.
  static std::optional<UuBegin> FindBegin(LineReader& reader);

  // `base64` as the "begin " line tells; `onlyDataLines` skips what cannot be a line of data (the
  // mail headers around a part that was saved whole).
  UuFileDecoder(OutputFile& output, bool base64) : output_(output), base64_(base64) {}

  // Decodes from the reader's position to the end of the data or of the file. False when reading or
  // writing failed.
  bool Decode(LineReader& reader, bool onlyDataLines = false);

  // Whether the line that ends the data has been seen.
  bool Ended() const { return ended_; }

  // Writes what an incomplete last group holds.
  void Finish();

 private:
  void DecodeFullLines(LineReader& reader);
  void DecodeLine(std::span<const uint8_t> line);
  void DecodeBase64(std::span<const uint8_t> text);

  OutputFile& output_;
  const bool base64_;
  bool ended_ = false;
  Base64Decoder base64Decoder_;
};

}  // namespace quillon
