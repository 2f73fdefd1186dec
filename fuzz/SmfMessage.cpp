// A message file of MHS: whatever is read from it is written, and reads back as it was.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "MemoryFiles.h"
#include "backends/mhs/MhsNames.h"
#include "backends/mhs/SmfAddress.h"
#include "backends/mhs/SmfDate.h"
#include "backends/mhs/SmfReader.h"
#include "backends/mhs/SmfWriter.h"

namespace {

using quillon::fuzz::Require;

// What is made of one value, whatever field it is of.
void Interpret(const quillon::SmfField& field) {
  for (const auto& parts : quillon::ParseSmfAddresses(field.value)) {
    if (!quillon::IsSmfAddress(parts.address)) continue;
    const auto again = quillon::ParseSmfAddresses(quillon::FormatSmfAddress(parts));
    Require(again.size() == 1 && again.front().address == parts.address);
  }
  const auto date = quillon::ParseSmfDate(field.value);
  if (date && date->year >= 1980 && date->year < 2080) {
    const auto again = quillon::ParseSmfDate(quillon::FormatSmfDate(*date));
    Require(again && again->year == date->year && again->second == date->second);
  }
  if (quillon::IsParcelName(field.value)) {
    Require(field.value.find_first_of("/\\:") == std::string::npos && field.value.front() != '.');
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto message = quillon::ReadSmf(bytes);
  if (!message) return 0;
  Require(message->headSize + message->body.size() == size);
  for (const auto& field : message->fields) Interpret(field);
  const auto written = quillon::WriteSmf(*message);
  if (written.size() > quillon::kMostSmfHead) return 0;
  const auto again = quillon::ReadSmf(written);
  Require(again && again->fields == message->fields);
  Require(quillon::WriteSmf(*again) == written);
  return 0;
}
