#include "codec/UuSplitter.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "codec/FileName.h"
#include "codec/UUCode.h"
#include "codec/UuFileDecoder.h"
#include "codec/UuFileEncoder.h"
#include "codec/UuFraming.h"
#include "codec/UuLines.h"
#include "core/WholeFile.h"

namespace quillon {
namespace {

struct Part {
  std::string path;
  UuSection section;  // its number is 0 when the file has no such line
};

// How many digits the number of a part has.
size_t NumberWidth(uint64_t count) {
  return count < 10 ? 1 : count < 100 ? 2 : 3;
}

std::string PartName(std::string_view base, uint64_t number, uint64_t count) {
  std::string digits = std::to_string(number);
  const size_t width = NumberWidth(count);
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return std::string(base) + digits + ".UUE";
}

bool WritePart(FileSystem& files, File& input, const std::string& inputPath,
               const std::string& path, uint64_t bytes, uint64_t number, uint64_t count) {
  if (SamePath(files, inputPath, path)) return false;
  OutputFile output(files, path);
  output.Append(UuSectionLine(number, count, inputPath));
  if (number == 1) output.Append(UuBeginLine(inputPath));
  if (!UuDataEncoder(input, bytes, output).Run()) return false;
  if (number == count) output.Append(UuTrailer(true));
  return output.Finish();
}

// The section line of a file, where it has one before its data.
bool ReadSection(FileSystem& files, Part& part) {
  LineReader reader(files.Open(part.path, OpenMode::kRead));
  std::span<const uint8_t> line;
  bool endsLine = true;
  while (reader.Next(line, endsLine)) {
    const std::string_view text(reinterpret_cast<const char*>(line.data()), line.size());
    part.section = ParseUuSection(text).value_or(UuSection());
    if (part.section.number != 0 || ParseUuBegin(text)) break;
  }
  return !reader.Failed();
}

// The parts in their order; none when one is missing or does not belong to the others.
std::vector<Part> OrderedParts(FileSystem& files, std::span<const std::string> paths) {
  std::vector<Part> parts;
  for (const std::string& path : paths) {
    parts.push_back({path, {}});
    if (!ReadSection(files, parts.back())) return {};
  }
  const auto numbered = [](const Part& part) { return part.section.number != 0; };
  if (std::none_of(parts.begin(), parts.end(), numbered)) return parts;
  std::stable_sort(parts.begin(), parts.end(), [](const Part& a, const Part& b) {
    return a.section.number < b.section.number;
  });
  const auto sameNumber = [](const Part& a, const Part& b) {
    return a.section.number == b.section.number;
  };
  parts.erase(std::unique(parts.begin(), parts.end(), sameNumber), parts.end());
  for (size_t i = 0; i < parts.size(); ++i) {
    const UuSection& section = parts[i].section;
    if (section.number != i + 1 || section.count != parts.size() ||
        section.fileName != parts[0].section.fileName) {
      return {};
    }
  }
  return parts;
}

bool SkipSectionLine(LineReader& reader) {
  std::span<const uint8_t> line;
  bool endsLine = true;
  while (reader.Next(line, endsLine)) {
    if (ParseUuSection({reinterpret_cast<const char*>(line.data()), line.size()})) return true;
  }
  return false;
}

bool DecodeParts(FileSystem& files, const std::vector<Part>& parts, LineReader& first, bool base64,
                 const std::string& path) {
  OutputFile output(files, path);
  UuFileDecoder decoder(output, base64);
  if (!decoder.Decode(first, true)) return false;
  for (size_t i = 1; i < parts.size() && !decoder.Ended(); ++i) {
    LineReader reader(files.Open(parts[i].path, OpenMode::kRead));
    if (parts[i].section.number != 0 && !SkipSectionLine(reader)) return false;
    if (!decoder.Decode(reader, true)) return false;
  }
  if (!decoder.Ended() && parts[0].section.number == 0) return false;
  decoder.Finish();
  return output.Finish();
}

}  // namespace

bool EncodeUuParts(FileSystem& files, const std::string& inputPath,
                   const std::string& outputDirectory, int32_t maximumSize) {
  if (maximumSize < static_cast<int32_t>(kUuLineSize)) return false;
  const uint64_t partBytes = static_cast<uint64_t>(maximumSize) / kUuLineSize * kUuLineBytes;
  const auto input = files.Open(inputPath, OpenMode::kRead);
  const std::optional<uint64_t> size = input ? input->Size() : std::nullopt;
  if (!size) return false;
  const uint64_t count = *size / partBytes + (*size % partBytes != 0 ? 1 : 0);
  const std::string_view name = FileNameOf(inputPath);
  const std::string base = outputDirectory + std::string(name.substr(0, name.find('.')));
  if (count <= 1) {
    ShortBool result = kFalse;
    UUCode(files).UUEncodeFile(inputPath, base + ".UUE", UUCode::kGraveAccentStyle, result);
    return result == kTrue;
  }
  for (uint64_t number = 1; number <= count; ++number) {
    if (WritePart(files, *input, inputPath, PartName(base, number, count), partBytes, number,
                  count))
      continue;
    while (--number != 0) files.RemoveFile(PartName(base, number, count));
    return false;
  }
  return true;
}

bool DecodeUuParts(FileSystem& files, std::span<const std::string> inputPaths,
                   const std::string& outputPath) {
  const std::vector<Part> parts = OrderedParts(files, inputPaths);
  if (parts.empty()) return false;
  LineReader first(files.Open(parts[0].path, OpenMode::kRead));
  const std::optional<UuBegin> begin = UuFileDecoder::FindBegin(first);
  if (!begin) return false;
  std::string path = outputPath;
  if (files.DirectoryExists(outputPath)) {
    path = UniqueAttachmentPath(files, outputPath, FileNameOf(begin->fileName), false);
  }
  for (const Part& part : parts) {
    if (SamePath(files, part.path, path)) return false;
  }
  return DecodeParts(files, parts, first, begin->base64, path);
}

}  // namespace quillon
