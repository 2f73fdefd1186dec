// Attachment files to mail-safe text and back: uuencode, base64 and the decoding of
// quoted-printable.
//
// Every operation is self-contained, and tells through the short boolean in its last argument
// whether it succeeded. Malformed data is no failure: it is decoded as well as it can be. A file
// that cannot be opened, read or written is, and the output is then removed. File operations
// replace an existing output; output and input must be different files.
//
// The record operations work on the caller's buffers from the given positions (counted from 0) and
// move these forward, so that one buffer can be fed through in several calls. An output buffer
// grows where it is too short.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/ShortBool.h"
#include "ports/FileSystem.h"

namespace quillon {

class UUCode {
 public:
  using Bytes = std::vector<uint8_t>;
  using ByteView = std::span<const uint8_t>;

  // The framing that ends with a grave-accent line, which every uudecoder understands. With any
  // other style there is an empty line in its place.
  static constexpr int16_t kGraveAccentStyle = 256;

  explicit UUCode(FileSystem& files) : files_(files) {}

  // Splits the encoded text of one file over as many files in `outputDirectory`, which gets its
  // missing separator, as lines of 63 characters fit into `maximumSize` bytes; see
  // docs/encodings.md for the names and the part headers.
  void UUEncodeFiles(const std::string& inputPath, std::string& outputDirectory,
                     int32_t maximumSize, ShortBool& result);
  void UUEncodeFile(const std::string& inputPath, const std::string& outputPath, int16_t style,
                    ShortBool& result);

  // The mode and the file name of the "begin " line in the first 512 bytes; both are empty when
  // there is none.
  void GetHeaderInfo(const std::string& path, std::string& mode, std::string& fileName,
                     ShortBool& result);
  void GetHeaderInfoFromStream(ByteView stream, std::string& mode, std::string& fileName,
                               ShortBool& result);

  // Joins the parts of a split file, given in any order, and decodes them. False when a part is
  // missing. `outputPath` may be a directory: the file then takes the name of the "begin " line,
  // cleaned.
  void UUDecodeFiles(std::span<const std::string> inputPaths, const std::string& outputPath,
                     ShortBool& result);
  // False when the file has no "begin " line.
  void UUDecodeFile(const std::string& inputPath, const std::string& outputPath, ShortBool& result);

  void EncodeStream(ByteView input, Bytes& output, ShortBool& result);
  // Writes the body of one line, after its length character, without its line end. False when the
  // input is too short.
  void EncodeRec(ByteView input, Bytes& output, size_t& inputPosition, size_t& outputPosition,
                 uint8_t lengthCharacter, ShortBool& result);
  // Decodes base64 text that is complete in memory, white space and several padded pieces included.
  void MIMEDecodeStream(ByteView input, Bytes& output, ShortBool& result);
  // Decodes one line, with or without its line end; `endSeen` when its length character ends the
  // data.
  void DecodeStream(ByteView line, Bytes& output, ShortBool& endSeen, ShortBool& result);
  // Decodes the groups of a line that holds `lineLength` bytes, whole groups, from behind its
  // length character.
  void DecodeRec(ByteView input, Bytes& output, size_t& inputPosition, size_t& outputPosition,
                 size_t lineLength, ShortBool& result);

  // The same as UUEncodeFiles.
  void UUEncodeFilesQLN(const std::string& inputPath, std::string& outputDirectory,
                        int32_t maximumSize, ShortBool& result);

  void Base64DecodeFile(const std::string& inputPath, const std::string& outputPath,
                        ShortBool& result);
  // Decodes `count` characters, a multiple of 4 without line breaks. False when the input is too
  // short.
  void Base64DecodeRec(ByteView input, Bytes& output, size_t& inputPosition, size_t& outputPosition,
                       size_t count, ShortBool& result);
  // Decodes the last group (missing characters count as "=") to 1, 2 or 3 bytes.
  void Base64DecodeLastRec(ByteView input, Bytes& output, size_t& inputPosition,
                           size_t& outputPosition, ShortBool& result);
  void Base64EncodeFile(const std::string& inputPath, const std::string& outputPath,
                        ShortBool& result);
  // Encodes `count` bytes to groups of 4 characters, the last filled up with zero bits; no padding
  // character is written.
  void Base64EncodeRec(ByteView input, Bytes& output, size_t& inputPosition, size_t& outputPosition,
                       size_t count, ShortBool& result);

  // As UUDecodeFile, but a file without a "begin " line is decoded from its first line on.
  void UUDecodeFile2(const std::string& inputPath, const std::string& outputPath,
                     ShortBool& result);
  // Adds the bytes of one line of text to the output; `endSeen` at the line that ends the data and
  // at "end".
  void UUDecodeRec(std::string_view line, Bytes& output, ShortBool& endSeen, ShortBool& result);
  // UUEncodeFile in the framing with the grave accent.
  void UUEncodeFile2(const std::string& inputPath, const std::string& outputPath,
                     ShortBool& result);

  // `lineBreakPending` tells before the call whether a line break is due before the first line, and
  // after it whether one would be due before a next: all but the last line of a text end in CR LF,
  // and a text may come in several files.
  void QPDecodeFile(const std::string& inputPath, const std::string& outputPath,
                    ShortBool& lineBreakPending, ShortBool& result);
  // Decodes one line without its line end in place of `output`; `softBreak` when the next line
  // continues it.
  void QPDecodeString(std::string_view line, std::string& output, ShortBool& softBreak,
                      ShortBool& result);

 private:
  FileSystem& files_;
};

}  // namespace quillon
