#include "addressbook/AddressWalk.h"

#include <algorithm>
#include <limits>

#include "addressbook/NameFold.h"

namespace quillon {

namespace {

// A mail system may claim for ever that there is more.
constexpr std::size_t kMostFruitless = 100;
constexpr std::size_t kMostEntries = 500'000;

constexpr std::size_t kEverything = std::numeric_limits<std::size_t>::max();

}  // namespace

MailResult AddressWalk::Fetch(MailRequest& request) {
  const auto before = entries_.size();
  bool more = false;
  auto result = book_->Fetch(request, entries_, more);
  if (!result.Succeeded()) return result;
  fruitless_ = entries_.size() == before ? fruitless_ + 1 : 0;
  isComplete_ = !more || fruitless_ == kMostFruitless || entries_.size() >= kMostEntries;
  return result;
}

MailResult AddressWalk::Reach(MailRequest& request, std::size_t index) {
  while (!isComplete_ && entries_.size() <= index) {
    auto result = Fetch(request);
    if (!result.Succeeded()) return result;
  }
  return {};
}

MailResult AddressWalk::ReachCurrent(MailRequest& request) {
  return Reach(request, static_cast<std::size_t>(std::max<std::ptrdiff_t>(position_, 0)));
}

MailResult AddressWalk::MoveFirst(MailRequest& request) {
  auto result = Reach(request, 0);
  if (result.Succeeded()) position_ = 0;
  return result;
}

MailResult AddressWalk::MoveNext(MailRequest& request) {
  const auto next = position_ + 1;
  auto result = Reach(request, static_cast<std::size_t>(next));
  if (!result.Succeeded()) return result;
  position_ = std::min(next, static_cast<std::ptrdiff_t>(entries_.size()));
  return result;
}

MailResult AddressWalk::MoveLast(MailRequest& request) {
  auto result = Reach(request, kEverything);
  if (!result.Succeeded()) return result;
  position_ = std::max<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(entries_.size()) - 1, 0);
  return result;
}

MailResult AddressWalk::MovePrevious(MailRequest& request) {
  auto result = ReachCurrent(request);
  if (result.Succeeded() && position_ != kBefore && !entries_.empty()) --position_;
  return result;
}

MailResult AddressWalk::Find(MailRequest& request, const std::string& beginning, bool& found) {
  const auto wanted = FoldedName(beginning);
  found = false;
  for (std::size_t i = 0;; ++i) {
    auto result = Reach(request, i);
    if (!result.Succeeded() || i == entries_.size()) return result;
    if (!FoldedName(entries_[i].name).starts_with(wanted)) continue;
    position_ = static_cast<std::ptrdiff_t>(i);
    found = true;
    return result;
  }
}

MailResult AddressWalk::Current(MailRequest& request, const AddressEntry*& entry) {
  entry = nullptr;
  auto result = ReachCurrent(request);
  if (!result.Succeeded() || position_ == kBefore) return result;
  const auto index = static_cast<std::size_t>(position_);
  if (index < entries_.size()) entry = &entries_[index];
  return result;
}

MailResult AddressWalk::Marks(MailRequest& request, bool& isBefore, bool& isBehind) {
  auto result = ReachCurrent(request);
  if (!result.Succeeded()) return result;
  isBefore = position_ == kBefore || entries_.empty();
  isBehind = position_ == static_cast<std::ptrdiff_t>(entries_.size());
  return result;
}

MailResult AddressWalk::All(MailRequest& request, const std::vector<AddressEntry>*& entries) {
  entries = &entries_;
  return Reach(request, kEverything);
}

void AddressWalk::TakeChoice(const AddressChoice& choice) {
  if (!book_->TakeChoice(choice)) return;
  entries_.clear();
  isComplete_ = false;
  fruitless_ = 0;
  position_ = 0;
}

}  // namespace quillon
