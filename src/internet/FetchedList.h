// The messages of a mailbox that were fetched before, found in the list of identifiers that the
// server gives. What it keeps is limited by what was fetched, however long the list is.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

class FetchedList {
 public:
  explicit FetchedList(std::vector<std::string> identifiers);

  void OnBegin();
  void OnIdentifier(std::uint32_t number, std::string_view identifier);
  // `whole`: it was the list of everything that is in the mailbox.
  void OnEnd(bool whole);

  // An identifier that two messages have says of neither that it was fetched.
  bool Contains(std::uint32_t number) const;
  // What is no longer in the mailbox; none until a whole list has come.
  std::vector<std::string> Gone() const;

 private:
  struct Fetched {
    std::string identifier;
    std::uint32_t number = 0;
    std::uint32_t messages = 0;  // that have it: 0, 1, or more than one
  };

  std::vector<Fetched> fetched_;        // by identifier
  std::vector<std::uint32_t> numbers_;  // in order
  bool whole_ = false;
};

}  // namespace quillon
