#include "internet/PopCapabilities.h"

#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::size_t kMostMechanisms = 64;

}  // namespace

void PopCapabilities::AddLine(std::string_view line) {
  line = Trim(line);
  entries.emplace_back(line);
  const auto end = line.find(' ');
  const auto word = UpperAscii(line.substr(0, end));
  if (word == "STLS") {
    startTls = true;
  } else if (word == "USER") {
    user = true;
  } else if (word == "PIPELINING") {
    pipelining = true;
  } else if (word == "SASL" && end != std::string_view::npos) {
    for (const auto& name : Split(line.substr(end + 1), " ")) {
      if (name.empty() || mechanisms.size() == kMostMechanisms) continue;
      mechanisms.push_back(UpperAscii(name));
    }
  }
}

}  // namespace quillon
