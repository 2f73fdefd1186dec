// Dial-up connections: the functions of the Remote Access Service, in plain records with UTF-8
// texts.
//
// A function returns the number of the service, 0 for success. Several threads may call it at once.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quillon {

namespace ras {

inline constexpr std::uint32_t kSuccess = 0;
inline constexpr std::uint32_t kInvalidFunction = 1;
inline constexpr std::uint32_t kInvalidHandle = 6;
inline constexpr std::uint32_t kOutOfMemory = 8;
inline constexpr std::uint32_t kNotSupported = 50;
inline constexpr std::uint32_t kInvalidParameter = 87;
inline constexpr std::uint32_t kNotImplemented = 120;
inline constexpr std::uint32_t kPending = 600;
inline constexpr std::uint32_t kBufferTooSmall = 603;
inline constexpr std::uint32_t kUserDisconnection = 631;
// Nobody's number: the library has raised a fault instead of returning one.
inline constexpr std::uint32_t kNoNumber = 0xFFFFFFFF;

}  // namespace ras

// Which of the published sizes the records have.
enum class RasLayout { Nt351, Windows95 };

using RasHandle = std::uint32_t;  // 0: none

struct RasDialParameters {
  std::string entryName;
  std::string phoneNumber;
  std::string userName;
  std::string password;
  std::string domain;
};

struct RasConnection {
  RasHandle handle = 0;
  std::string entryName;
};

class Ras {
 public:
  virtual ~Ras() = default;

  // Blocks until the connection is made or has failed. `connection` may be set long before that,
  // and stays set after a failure.
  virtual std::uint32_t Dial(RasLayout layout, const RasDialParameters& parameters,
                             std::atomic<RasHandle>& connection) = 0;
  virtual std::uint32_t HangUp(RasHandle connection) = 0;
  // At most 256.
  virtual std::uint32_t EnumConnections(RasLayout layout,
                                        std::vector<RasConnection>& connections) = 0;
  // kInvalidHandle when there is no such connection, or not any more.
  virtual std::uint32_t ConnectStatus(RasLayout layout, RasHandle connection) = 0;
  virtual std::uint32_t ErrorString(std::uint32_t number, std::string& text) = 0;
};

class RasLibrary {
 public:
  virtual ~RasLibrary() = default;

  // Loads it, for as long as somebody holds what is returned; null when it cannot be loaded.
  virtual std::shared_ptr<Ras> Load() = 0;
};

}  // namespace quillon
