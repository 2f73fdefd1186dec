#include "internet/FetchedList.h"

#include <algorithm>
#include <utility>

namespace quillon {

FetchedList::FetchedList(std::vector<std::string> identifiers) {
  std::sort(identifiers.begin(), identifiers.end());
  identifiers.erase(std::unique(identifiers.begin(), identifiers.end()), identifiers.end());
  fetched_.reserve(identifiers.size());
  for (auto& identifier : identifiers) fetched_.push_back({std::move(identifier)});
}

void FetchedList::OnBegin() {
  for (auto& fetched : fetched_) fetched.messages = 0;
  numbers_.clear();
  whole_ = false;
}

void FetchedList::OnIdentifier(std::uint32_t number, std::string_view identifier) {
  const auto found = std::lower_bound(
      fetched_.begin(), fetched_.end(), identifier,
      [](const Fetched& fetched, std::string_view wanted) { return fetched.identifier < wanted; });
  if (found == fetched_.end() || found->identifier != identifier) return;
  found->number = number;
  found->messages = found->messages == 0 ? 1 : 2;
}

void FetchedList::OnEnd(bool whole) {
  whole_ = whole;
  for (const auto& fetched : fetched_) {
    if (fetched.messages == 1) numbers_.push_back(fetched.number);
  }
  std::sort(numbers_.begin(), numbers_.end());
}

bool FetchedList::Contains(std::uint32_t number) const {
  return std::binary_search(numbers_.begin(), numbers_.end(), number);
}

std::vector<std::string> FetchedList::Gone() const {
  std::vector<std::string> gone;
  if (!whole_) return gone;
  for (const auto& fetched : fetched_) {
    if (fetched.messages == 0) gone.push_back(fetched.identifier);
  }
  return gone;
}

}  // namespace quillon
