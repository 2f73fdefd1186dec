// What a POP3 server says it can do, in its answer to CAPA (RFC 2449).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

struct PopCapabilities {
  bool startTls = false;  // STLS, RFC 2595
  bool user = false;      // USER and PASS
  bool pipelining = false;
  std::vector<std::string> mechanisms;  // SASL, RFC 5034
  std::vector<std::string> entries;     // as the server wrote them

  // One line of the answer, without its line end; what is not understood is left out.
  void AddLine(std::string_view line);
};

}  // namespace quillon
