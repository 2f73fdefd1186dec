// What an enumeration of VIM gives, piece by piece.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "backends/vim/VimFailure.h"
#include "ports/Vim.h"

namespace quillon {

// Of a library that never comes to an end.
inline constexpr std::size_t kMostVimEntries = std::size_t{1} << 20U;

// Calls next(position, pieces, more) until there are no more, or `most` of them; the last call may
// give some beyond that. A library that says there is more, but gives nothing or stays where it is,
// is taken for one that has come to the end. Throws VimFailure.
template <typename Piece, typename Next>
std::vector<Piece> EnumerateVimFrom(VimPosition& position, bool& more, std::size_t most,
                                    const std::string& step, Next&& next) {
  std::vector<Piece> all;
  more = true;
  while (more && all.size() < most) {
    const auto before = position;
    std::vector<Piece> pieces;
    more = false;
    CheckVim(next(position, pieces, more), step);
    if (pieces.empty() || position == before) more = false;
    std::move(pieces.begin(), pieces.end(), std::back_inserter(all));
  }
  return all;
}

// From the beginning, and no more than `most`.
template <typename Piece, typename Next>
std::vector<Piece> EnumerateVim(std::size_t most, const std::string& step, Next&& next) {
  VimPosition position;
  bool more = true;
  auto all = EnumerateVimFrom<Piece>(position, more, most, step, std::forward<Next>(next));
  if (all.size() > most) all.resize(most);
  return all;
}

}  // namespace quillon
