// The records of the Remote Access Service with ANSI texts, in two of their published sizes: that
// of Windows NT 3.51, and that of Windows 95 and NT 4.0. Each begins with its own size, by which
// the service tells them apart.
#pragma once

#include <windows.h>
#include <cstddef>

namespace quillon::ras_record {

template <std::size_t EntrySize, std::size_t CallbackSize>
struct DialParameters {
  DWORD size = sizeof(DialParameters);
  char entryName[EntrySize] = {};
  char phoneNumber[129] = {};
  char callbackNumber[CallbackSize] = {};
  char userName[257] = {};
  char password[257] = {};
  char domain[16] = {};
};

struct Connection351 {
  DWORD size = sizeof(Connection351);
  DWORD handle = 0;
  char entryName[21] = {};
};

struct Connection95 {
  DWORD size = sizeof(Connection95);
  DWORD handle = 0;
  char entryName[257] = {};
  char deviceType[17] = {};
  char deviceName[129] = {};
};

template <std::size_t DeviceNameSize>
struct ConnectionStatus {
  DWORD size = sizeof(ConnectionStatus);
  DWORD state = 0;
  DWORD error = 0;
  char deviceType[17] = {};
  char deviceName[DeviceNameSize] = {};
};

struct Nt351 {
  using Parameters = DialParameters<21, 49>;
  using Connection = Connection351;
  using Status = ConnectionStatus<33>;
};

struct Windows95 {
  using Parameters = DialParameters<257, 129>;
  using Connection = Connection95;
  using Status = ConnectionStatus<129>;
};

static_assert(sizeof(Nt351::Parameters) == 736 && sizeof(Windows95::Parameters) == 1052);
static_assert(offsetof(Nt351::Parameters, phoneNumber) == 25);
static_assert(offsetof(Nt351::Parameters, callbackNumber) == 154);
static_assert(offsetof(Nt351::Parameters, userName) == 203);
static_assert(offsetof(Nt351::Parameters, password) == 460);
static_assert(offsetof(Nt351::Parameters, domain) == 717);
static_assert(offsetof(Windows95::Parameters, phoneNumber) == 261);
static_assert(offsetof(Windows95::Parameters, callbackNumber) == 390);
static_assert(offsetof(Windows95::Parameters, userName) == 519);
static_assert(offsetof(Windows95::Parameters, password) == 776);
static_assert(offsetof(Windows95::Parameters, domain) == 1033);
static_assert(sizeof(Connection351) == 32 && sizeof(Connection95) == 412);
static_assert(offsetof(Connection95, deviceName) == 282);
static_assert(sizeof(Nt351::Status) == 64 && sizeof(Windows95::Status) == 160);

}  // namespace quillon::ras_record
