// The server's side of one protocol conversation, fed by its Connection.
#pragma once

#include <cstddef>
#include <string_view>

namespace mailhost {

class Session {
 public:
  virtual ~Session() = default;

  // The client has just connected.
  virtual void OnOpen() = 0;
  // The TLS that the session has begun is in place.
  virtual void OnSecured() {}
  // One command line, without its CR LF.
  virtual void OnLine(std::string_view line) = 0;
  // A line that is none: too long, or not ended by CR LF. `why` says it in words.
  virtual void OnBadLine(std::string_view why) = 0;

  // True when the next line is part of a login, and not to be shown.
  virtual bool ExpectsSecret() const { return false; }

  // While true, input goes to OnContent() instead of being cut into lines.
  virtual bool WantsContent() const { return false; }
  // Returns how many of the bytes it took: all of them, or those up to the end of the content.
  virtual std::size_t OnContent(std::string_view bytes) { return bytes.size(); }

  // False keeps the client's further lines waiting.
  virtual bool WantsInput() const { return true; }
  // The client has ended the connection; what it has sent has been handled.
  virtual void OnClientGone() {}
};

}  // namespace mailhost
