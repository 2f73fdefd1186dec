// Copies what a provider library passes, whose pointers may lead anywhere and whose sizes may be
// any number. Whatever cannot be read, or is larger than anything of its kind, is refused.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/ProviderTable.h"

namespace quillon {

class ProviderCopy {
 public:
  explicit ProviderCopy(const ProviderGuard& guard) : guard_(guard) {}

  // A record that begins with its size. What it lacks is 0.
  template <class Record>
  bool Copy(const Record* from, Record& to) const {
    static_assert(std::is_trivially_copyable_v<Record>);
    to = {};
    QuillonUint32 size = 0;
    if (!CopyBytes(from, &size, sizeof size) || size < sizeof size || size > kLargestRecord) {
      return false;
    }
    // A member that is there in part is not there.
    const auto whole = std::min(std::size_t{size}, sizeof to) / sizeof(void*) * sizeof(void*);
    return CopyBytes(from, &to, whole);
  }

  // Text: what is not UTF-8 becomes U+FFFD.
  bool Copy(const QuillonText& from, std::string& to) const;
  bool Copy(const QuillonText* from, std::string& to) const;
  // As it is, when it is not longer.
  bool CopyAsBytes(const QuillonText& from, std::size_t longest, std::string& to) const;

  bool Copy(const QuillonParty& from, ProviderParty& to) const;
  bool Copy(const QuillonParty* from, QuillonUint32 count, std::vector<ProviderParty>& to) const;
  bool Copy(const QuillonEntry& from, ProviderEntry& to) const;
  bool Copy(const QuillonHeader& from, ProviderHeader& to) const;
  bool Copy(const QuillonMessage& from, ProviderMessage& to) const;

 private:
  static constexpr QuillonUint32 kLargestRecord = 64U << 10U;

  bool CopyBytes(const void* from, void* to, std::size_t size) const;

  const ProviderGuard& guard_;
};

}  // namespace quillon
