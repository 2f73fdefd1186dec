// What reads text in the fuzz targets.
#pragma once

#include "codec/TextReader.h"
#include "platform/Platform.h"

namespace quillon::fuzz {

inline const TextReader& Reader() {
  static const auto codePage = MakeAnsiCodePage();
  static const auto sets = MakeCharacterSets();
  static const TextReader reader(*codePage, *sets);
  return reader;
}

}  // namespace quillon::fuzz
