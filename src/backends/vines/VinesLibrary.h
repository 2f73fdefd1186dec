// The provider library that the configuration file names, loaded when it is first asked for.
#pragma once

#include <cstdint>
#include <string>

#include "mail/INIUtilities.h"
#include "ports/MailProvider.h"

namespace quillon {

class VinesLibrary {
 public:
  VinesLibrary(MailProvider& provider, clsINIUtilities& configuration)
      : provider_(provider), configuration_(configuration) {}

  // As the configuration file has it; empty when it names none.
  std::string Name();

  // provider::kSuccess when the library can be worked with.
  std::int32_t Load();

  // What a number means: the library's own text, where it is one of its numbers.
  std::string TextOf(std::int32_t number);

  MailProvider& Provider() noexcept { return provider_; }

 private:
  MailProvider& provider_;
  clsINIUtilities& configuration_;
};

}  // namespace quillon
