// The operations of UUCode that turn one file into another.
#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "codec/Base64.h"
#include "codec/Base64FileEncoder.h"
#include "codec/BlockIo.h"
#include "codec/QuotedPrintable.h"
#include "codec/UUCode.h"
#include "codec/UuFileDecoder.h"
#include "codec/UuFileEncoder.h"
#include "codec/UuFraming.h"
#include "codec/UuSplitter.h"
#include "core/WholeFile.h"

namespace quillon {
namespace {

constexpr size_t kHeaderInfoBytes = 512;

bool DecodeBase64File(File& input, OutputFile& output) {
  Base64Decoder decoder;
  std::vector<uint8_t> block = BufferFor(input, 4096);
  for (;;) {
    const std::optional<size_t> count = ReadBlock(input, block);
    if (!count) return false;
    const std::span<const uint8_t> text = std::span(block).first(*count);
    output.Commit(decoder.Decode(text, output.Reserve(Base64Decoder::Capacity(text.size()))));
    if (text.size() < block.size()) break;
  }
  output.Commit(decoder.Finish(output.Reserve(3)));
  return output.Finish();
}

// Decodes the whole lines in memory, unless they are very long.
void DecodeWholeLines(LineReader& input, OutputFile& output, bool& breakPending) {
  for (;;) {
    const std::span<const uint8_t> text = input.Buffered();
    const std::string_view start(reinterpret_cast<const char*>(text.data()),
                                 std::min(text.size(), kIoBlock / 2));
    const size_t lineEnd = start.rfind('\n');
    if (lineEnd == std::string_view::npos) return;
    const bool crLf = lineEnd != 0 && start[lineEnd - 1] == '\r';
    const std::span<const uint8_t> lines = text.first(lineEnd - (crLf ? 1 : 0));
    if (breakPending) output.Append("\r\n");
    bool softBreak = false;
    output.Commit(DecodeQuotedPrintableLines(lines, output.Reserve(2 * lines.size()), softBreak));
    breakPending = !softBreak;
    input.Skip(lineEnd + 1);
  }
}

bool DecodeQuotedPrintableFile(LineReader& input, OutputFile& output, bool& breakPending) {
  std::span<const uint8_t> piece;
  bool endsLine = true;
  bool atLineStart = true;
  while (output.Good()) {
    if (atLineStart) DecodeWholeLines(input, output, breakPending);
    if (!input.Next(piece, endsLine)) break;
    uint8_t* const out = output.Reserve(piece.size() + 2);
    size_t size = 0;
    if (atLineStart && breakPending) {
      out[size++] = '\r';
      out[size++] = '\n';
    }
    if (endsLine) {
      bool softBreak = false;
      size += DecodeQuotedPrintableLine(piece, out + size, softBreak);
      breakPending = !softBreak;
    } else {
      const size_t cut = QuotedPrintableCut(piece);
      const size_t taken = cut == 0 ? piece.size() : cut;
      size += DecodeQuotedPrintablePiece(piece.first(taken), out + size);
      input.Unread(piece.size() - taken);
      breakPending = true;
    }
    output.Commit(size);
    atLineStart = endsLine;
  }
  return !input.Failed() && output.Finish();
}

// `needsBegin`: a file without a "begin " line is not decoded at all, else from its first line on.
bool DecodeUuFile(FileSystem& files, const std::string& inputPath, const std::string& outputPath,
                  bool needsBegin) {
  LineReader reader(OpenInput(files, inputPath, outputPath));
  const std::optional<UuBegin> begin = UuFileDecoder::FindBegin(reader);
  if (reader.Failed() || (!begin && (needsBegin || !reader.Rewind()))) return false;
  OutputFile output(files, outputPath);
  UuFileDecoder decoder(output, begin && begin->base64);
  if (!decoder.Decode(reader)) return false;
  decoder.Finish();
  return output.Finish();
}

}  // namespace

void UUCode::UUEncodeFile(const std::string& inputPath, const std::string& outputPath,
                          int16_t style, ShortBool& result) {
  result = ToShortBool(UuFileEncoder(files_, inputPath, outputPath, UuBeginLine(inputPath),
                                     UuTrailer(style == kGraveAccentStyle))
                           .Run());
}

void UUCode::UUEncodeFile2(const std::string& inputPath, const std::string& outputPath,
                           ShortBool& result) {
  UUEncodeFile(inputPath, outputPath, kGraveAccentStyle, result);
}

void UUCode::UUEncodeFiles(const std::string& inputPath, std::string& outputDirectory,
                           int32_t maximumSize, ShortBool& result) {
  outputDirectory = WithSeparator(files_, outputDirectory);
  result = ToShortBool(EncodeUuParts(files_, inputPath, outputDirectory, maximumSize));
}

void UUCode::UUEncodeFilesQLN(const std::string& inputPath, std::string& outputDirectory,
                              int32_t maximumSize, ShortBool& result) {
  UUEncodeFiles(inputPath, outputDirectory, maximumSize, result);
}

void UUCode::GetHeaderInfo(const std::string& path, std::string& mode, std::string& fileName,
                           ShortBool& result) {
  std::array<uint8_t, kHeaderInfoBytes> start{};
  const auto file = files_.Open(path, OpenMode::kRead);
  const std::optional<size_t> count = file ? ReadBlock(*file, start) : std::nullopt;
  GetHeaderInfoFromStream(ByteView(start).first(count.value_or(0)), mode, fileName, result);
}

void UUCode::UUDecodeFiles(std::span<const std::string> inputPaths, const std::string& outputPath,
                           ShortBool& result) {
  result = ToShortBool(DecodeUuParts(files_, inputPaths, outputPath));
}

void UUCode::UUDecodeFile(const std::string& inputPath, const std::string& outputPath,
                          ShortBool& result) {
  result = ToShortBool(DecodeUuFile(files_, inputPath, outputPath, true));
}

void UUCode::UUDecodeFile2(const std::string& inputPath, const std::string& outputPath,
                           ShortBool& result) {
  result = ToShortBool(DecodeUuFile(files_, inputPath, outputPath, false));
}

void UUCode::Base64EncodeFile(const std::string& inputPath, const std::string& outputPath,
                              ShortBool& result) {
  result = ToShortBool(Base64FileEncoder(files_, inputPath, outputPath).Run());
}

void UUCode::Base64DecodeFile(const std::string& inputPath, const std::string& outputPath,
                              ShortBool& result) {
  result = kFalse;
  const auto input = OpenInput(files_, inputPath, outputPath);
  if (!input) return;
  OutputFile output(files_, outputPath);
  result = ToShortBool(DecodeBase64File(*input, output));
}

void UUCode::QPDecodeFile(const std::string& inputPath, const std::string& outputPath,
                          ShortBool& lineBreakPending, ShortBool& result) {
  result = kFalse;
  LineReader input(OpenInput(files_, inputPath, outputPath));
  if (input.Failed()) return;
  OutputFile output(files_, outputPath);
  bool breakPending = lineBreakPending != kFalse;
  result = ToShortBool(DecodeQuotedPrintableFile(input, output, breakPending));
  lineBreakPending = ToShortBool(breakPending);
}

}  // namespace quillon
