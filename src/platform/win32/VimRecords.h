// The records of VIM 1.00 as its library lays them out, with ANSI texts. They have the same layout
// under any packing.
#pragma once

#include <windows.h>
#include <cstddef>
#include <cstdint>

namespace quillon::vim_record {

using Word = std::uint16_t;
using Bool = std::uint16_t;
using Dword = std::uint32_t;
using Selector = std::uint32_t;
using Status = std::uint32_t;

// Handed over by value.
struct Ref {
  Dword first = 0;
  Dword second = 0;
};

inline constexpr Ref kRoot{0, 0xFFFFFFFF};

struct DistinguishedName {
  Selector type = 0;
  char addressBook[256] = {};
  char value[1024] = {};
};

struct Address {
  Selector type = 0;
  char value[1024] = {};
};

struct Recipient {
  Selector type = 0;
  DistinguishedName name;
  Address address;
};

struct Attribute {
  Selector selector = 0;
  Dword size = 0;
  void* buffer = nullptr;
};

struct Item {
  Selector itemClass = 0;
  char type[64] = {};
  char name[256] = {};
  char path[256] = {};
  Dword size = 0;
  Ref reference;
};

struct BufferOrFile {
  Dword size = 0;
  void* buffer = nullptr;  // null when there is a file
  Dword offset = 0;
  char* file = nullptr;
};

struct Date {
  Selector zone = 0;
  Dword date = 0xFFFFFFFF;  // day, month, and the year in the upper half
  Dword time = 0xFFFFFFFF;  // hundredths, seconds, minutes, hours
};

static_assert(sizeof(Ref) == 8);
static_assert(sizeof(DistinguishedName) == 1284 && offsetof(DistinguishedName, value) == 260);
static_assert(sizeof(Address) == 1028 && offsetof(Address, value) == 4);
static_assert(sizeof(Recipient) == 2316 && offsetof(Recipient, address) == 1288);
static_assert(sizeof(Attribute) == 12 && offsetof(Attribute, buffer) == 8);
static_assert(sizeof(Item) == 592 && offsetof(Item, name) == 68 && offsetof(Item, path) == 324 &&
              offsetof(Item, size) == 580 && offsetof(Item, reference) == 584);
static_assert(sizeof(BufferOrFile) == 16 && offsetof(BufferOrFile, file) == 12);
static_assert(sizeof(Date) == 12 && offsetof(Date, time) == 8);

}  // namespace quillon::vim_record
