#include "addressbook/NameFold.h"

#include <array>

#include "core/Utf8.h"

namespace quillon {

namespace {

// Letters with the same distance from upper to lower case. In blocks with the distance 1 the two
// stand in turn, and `first` is upper case.
struct Block {
  char32_t first;
  char32_t last;
  char32_t distance;
};

constexpr std::array kBlocks{
    Block{0x0041, 0x005A, 32},  // ASCII
    Block{0x00C0, 0x00D6, 32},  // Latin-1 before the multiplication sign
    Block{0x00D8, 0x00DE, 32},  // Latin-1 behind it
    Block{0x0100, 0x012F, 1},   // Latin Extended-A, to 017E
    Block{0x0132, 0x0137, 1},   // IJ
    Block{0x0139, 0x0148, 1},   // L
    Block{0x014A, 0x0177, 1},   // Eng
    Block{0x0179, 0x017E, 1},   // Z
    Block{0x0391, 0x03A9, 32},  // Greek
    Block{0x0400, 0x040F, 80},  // Cyrillic, to 04BF
    Block{0x0410, 0x042F, 32},  // A
    Block{0x0460, 0x0481, 1},   // Omega
    Block{0x048A, 0x04BF, 1},   // Short I with tail
    Block{0x1E00, 0x1E95, 1},   // Latin Extended Additional
    Block{0x1EA0, 0x1EFF, 1},   // of Vietnamese
};

char32_t Folded(char32_t letter) {
  for (const auto& block : kBlocks) {
    if (letter < block.first || letter > block.last) continue;
    const bool isLower = block.distance == 1 && (letter - block.first) % 2 == 1;
    return isLower ? letter : letter + block.distance;
  }
  return letter;
}

}  // namespace

std::string FoldedName(std::string_view text) {
  std::string folded;
  folded.reserve(text.size());
  while (!text.empty()) AppendUtf8(folded, Folded(TakeUtf8(text)));
  return folded;
}

}  // namespace quillon
