#include "platform/win32/Rasapi32.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>

#include "core/FieldBytes.h"
#include "platform/win32/ForeignLibrary.h"
#include "platform/win32/RasRecords.h"

namespace quillon {
namespace {

constexpr DWORD kMostConnections = 256;
constexpr DWORD kNoNotifier = 0;

// The types of the functions, by which a call is made.
using DialType = DWORD(WINAPI*)(void*, char*, void*, DWORD, void*, DWORD*);
using HangUpType = DWORD(WINAPI*)(DWORD);
using EnumConnectionsType = DWORD(WINAPI*)(void*, DWORD*, DWORD*);
using ConnectStatusType = DWORD(WINAPI*)(DWORD, void*);
using ErrorStringType = DWORD(WINAPI*)(UINT, char*, DWORD);

// The other thread's call puts it there while this one looks at it.
static_assert(sizeof(std::atomic<RasHandle>) == sizeof(DWORD) &&
              std::atomic<RasHandle>::is_always_lock_free);

class LoadedRas final : public Ras {
 public:
  explicit LoadedRas(const CodePage& codePage) : codePage_(codePage) {}
  ~LoadedRas() override { library_.Unload(); }
  LoadedRas(const LoadedRas&) = delete;
  LoadedRas& operator=(const LoadedRas&) = delete;

  bool IsWhole() {
    const auto functions = {"RasDialA", "RasHangUpA", "RasEnumConnectionsA", "RasGetConnectStatusA",
                            "RasGetErrorStringA"};
    return std::all_of(functions.begin(), functions.end(), [this](const char* function) {
      return library_.Find<void()>(function) != nullptr;
    });
  }

  std::uint32_t Dial(RasLayout layout, const RasDialParameters& parameters,
                     std::atomic<RasHandle>& connection) override {
    return layout == RasLayout::Nt351
               ? DialAs<ras_record::Nt351::Parameters>(parameters, connection)
               : DialAs<ras_record::Windows95::Parameters>(parameters, connection);
  }
  std::uint32_t HangUp(RasHandle connection) override {
    return Call("RasHangUpA", HangUpType{}, DWORD{connection});
  }
  std::uint32_t EnumConnections(RasLayout layout,
                                std::vector<RasConnection>& connections) override {
    return layout == RasLayout::Nt351 ? EnumAs<ras_record::Nt351::Connection>(connections)
                                      : EnumAs<ras_record::Windows95::Connection>(connections);
  }
  std::uint32_t ConnectStatus(RasLayout layout, RasHandle connection) override {
    return layout == RasLayout::Nt351 ? StatusAs<ras_record::Nt351::Status>(connection)
                                      : StatusAs<ras_record::Windows95::Status>(connection);
  }
  std::uint32_t ErrorString(std::uint32_t number, std::string& text) override {
    std::array<char, 512> bytes{};
    const auto result = Call("RasGetErrorStringA", ErrorStringType{}, UINT{number}, bytes.data(),
                             static_cast<DWORD>(bytes.size()));
    if (result == ras::kSuccess) text = TextIn(bytes);
    return result;
  }

 private:
  template <class... Parameters, class... Arguments>
  std::uint32_t Call(const char* function, DWORD(WINAPI* type)(Parameters...),
                     Arguments... arguments) {
    return library_.Call(function, type, DWORD{ras::kNoNumber}, DWORD{ras::kNoNumber},
                         arguments...);
  }

  template <class Record>
  std::uint32_t DialAs(const RasDialParameters& parameters, std::atomic<RasHandle>& connection) {
    Record record;
    Put(record.entryName, parameters.entryName);
    Put(record.phoneNumber, parameters.phoneNumber);
    Put(record.userName, parameters.userName);
    Put(record.password, parameters.password);
    Put(record.domain, parameters.domain);
    const auto result = Call("RasDialA", DialType{}, static_cast<void*>(nullptr),
                             static_cast<char*>(nullptr), static_cast<void*>(&record), kNoNotifier,
                             static_cast<void*>(nullptr), reinterpret_cast<DWORD*>(&connection));
    SecureZeroMemory(record.password, sizeof record.password);
    return result;
  }

  template <class Record>
  std::uint32_t EnumAs(std::vector<RasConnection>& connections) {
    std::vector<Record> records(kMostConnections);
    DWORD size = kMostConnections * DWORD{sizeof(Record)};
    DWORD count = 0;
    const auto result = Call("RasEnumConnectionsA", EnumConnectionsType{},
                             static_cast<void*>(records.data()), &size, &count);
    if (result != ras::kSuccess) return result;
    records.resize(std::min<std::size_t>(count, kMostConnections));
    connections.reserve(records.size());
    for (const auto& record : records) {
      connections.push_back({record.handle, TextIn(record.entryName)});
    }
    return result;
  }

  template <class Record>
  std::uint32_t StatusAs(RasHandle connection) {
    Record record;
    return Call("RasGetConnectStatusA", ConnectStatusType{}, DWORD{connection},
                static_cast<void*>(&record));
  }

  template <std::size_t Size>
  void Put(char (&field)[Size], const std::string& text) const {
    const auto bytes = FieldBytes(codePage_, text, Size);
    std::memcpy(field, bytes.data(), bytes.size());
  }
  template <class Bytes>
  std::string TextIn(const Bytes& bytes) const {
    const char* const begin = std::data(bytes);
    return codePage_.ToText({begin, strnlen(begin, std::size(bytes))});
  }

  const CodePage& codePage_;
  ForeignLibrary library_{L"rasapi32.dll"};
};

}  // namespace

std::shared_ptr<Ras> Rasapi32::Load() {
  auto loaded = std::make_shared<LoadedRas>(codePage_);
  return loaded->IsWhole() ? loaded : nullptr;
}

}  // namespace quillon
