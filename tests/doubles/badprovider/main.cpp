// badprovider.dll: a provider library that does what one must not do. QUILLON_BAD_PROVIDER in the
// environment says what that is, whenever one of its functions is called, or else the name of the
// file, which may be copied for that.
#include <windows.h>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "quillon_provider.h"

namespace badprovider {
namespace {

std::string OwnName() {
  HMODULE own = nullptr;
  GetModuleHandleExA(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<const char*>(&OwnName), &own);
  std::array<char, MAX_PATH> path{};
  GetModuleFileNameA(own, path.data(), MAX_PATH);
  const std::string name = path.data();
  const auto begin = name.find_last_of('\\') + 1;
  return name.substr(begin, name.find_last_of('.') - begin);
}

bool Does(const char* what) {
  std::array<char, 40> text{};
  const auto length = GetEnvironmentVariableA("QUILLON_BAD_PROVIDER", text.data(), text.size());
  return (length != 0 ? std::string(text.data()) : OwnName()) == what;
}

QuillonText TextFrom(const char* text) {
  return {text, static_cast<QuillonUint32>(std::strlen(text))};
}

template <class Type>
Type* Nowhere() {
  const volatile std::uintptr_t address = 0x10;  // which the compiler is not to know
  return std::bit_cast<Type*>(std::uintptr_t{address});
}

QuillonInt32 QUILLON_CALL Login(const QuillonCall*, const QuillonLogin*, QuillonInt32* session) {
  if (Does("raise")) RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr);
  if (Does("fault")) *Nowhere<volatile int>() = 1;
  *session = Does("no session") ? 0 : 1;
  return QUILLON_SUCCESS;
}

QuillonHeader Header() {
  QuillonHeader header{};
  header.size = Does("short record") ? offsetof(QuillonHeader, from) : sizeof header;
  if (Does("no size")) header.size = 0;
  if (Does("long record")) header.size = 0xFFFFFFFF;
  header.id = TextFrom("id");
  if (Does("no id")) header.id.length = 0;
  if (Does("long id")) header.id.length = 1001;
  header.subject = TextFrom(Does("no utf-8") ? "a\xFF\xC3z" : "subject");
  if (Does("long text")) header.subject.length = 0x7FFFFFFF;
  if (Does("longer than it is")) header.subject.length = 32 << 20;
  if (Does("text nowhere")) header.subject.bytes = Nowhere<char>();
  if (Does("null text")) header.subject.bytes = nullptr;
  header.from.name = TextFrom("ann");
  return header;
}

QuillonInt32 QUILLON_CALL List(const QuillonCall*, const QuillonListing* listing) {
  const QuillonHeader header = Header();
  const QuillonHeader* const passed = Does("record nowhere") ? Nowhere<QuillonHeader>()
                                      : Does("null record")  ? nullptr
                                                             : &header;
  if (Does("fault between")) {
    listing->Found(listing->context, &header);
    *Nowhere<volatile int>() = 1;
  }
  do {
    listing->Found(listing->context, passed);
  } while (Does("no end"));
  return QUILLON_SUCCESS;
}

QuillonInt32 QUILLON_CALL Read(const QuillonCall*, const QuillonReading* reading) {
  if (Does("no message")) return QUILLON_SUCCESS;
  const QuillonParty party{QUILLON_TO, TextFrom("ann"), TextFrom("")};
  QuillonMessage message{};
  message.size = sizeof message;
  message.recipientCount = Does("many recipients") ? 0xFFFFFFFF : 1;
  message.recipients = Does("recipients nowhere") ? Nowhere<QuillonParty>() : &party;
  reading->Message(reading->context, &message);
  const QuillonText name = TextFrom("a.txt");
  QuillonText path{};
  do {
    reading->NewFile(reading->context, Does("name nowhere") ? Nowhere<QuillonText>() : &name,
                     Does("path nowhere") ? Nowhere<QuillonText>() : &path);
  } while (Does("files without end"));
  return QUILLON_SUCCESS;
}

QuillonInt32 QUILLON_CALL Books(const QuillonCall*, const QuillonBooks* books) {
  const QuillonText name = TextFrom(Does("nameless book") ? "" : "book");
  do {
    books->Found(books->context, Does("book nowhere") ? Nowhere<QuillonText>() : &name);
  } while (Does("no end"));
  return QUILLON_SUCCESS;
}

QuillonInt32 QUILLON_CALL Entries(const QuillonCall*, const QuillonEntries* part) {
  QuillonEntry entry{};
  entry.size = Does("short record") ? offsetof(QuillonEntry, address) : sizeof entry;
  entry.name = TextFrom("ann");
  entry.address = TextFrom("address");
  if (Does("text nowhere")) entry.address.bytes = Nowhere<char>();
  do {
    part->Found(part->context, Does("record nowhere") ? Nowhere<QuillonEntry>() : &entry);
  } while (Does("no end"));
  return QUILLON_SUCCESS;
}

QuillonInt32 QUILLON_CALL ChooseAddresses(const QuillonCall*, const QuillonChoice* choice) {
  QuillonParty party{QUILLON_TO, TextFrom("ann"), TextFrom("")};
  if (Does("long text")) party.name.length = 0x7FFFFFFF;
  choice->Chosen(choice->context, Does("record nowhere") ? Nowhere<QuillonParty>() : &party);
  return Does("cancelled") ? QUILLON_CANCELLED : QUILLON_SUCCESS;
}

void QUILLON_CALL ErrorText(QuillonInt32, void* context,
                            void(QUILLON_CALL* text)(void*, const QuillonText*)) {
  const QuillonText good = TextFrom("text");
  text(context, Does("text nowhere") ? Nowhere<QuillonText>() : &good);
  if (Does("fault")) *Nowhere<volatile int>() = 1;
}

}  // namespace

extern "C" const QuillonProviderTable* QUILLON_CALL QuillonProviderGetTable(QuillonUint32) {
  static QuillonProviderTable table{};
  table = {};
  table.size = Does("short table") ? offsetof(QuillonProviderTable, Read) + 1 : sizeof table;
  if (Does("tiny table")) table.size = 2;
  if (Does("endless table")) table.size = 0xFFFFFFFF;
  table.version = Does("other version") ? 2 : QUILLON_PROVIDER_VERSION;
  table.Login = Does("no login") ? nullptr : &Login;
  table.List = &List;
  table.Read = &Read;
  table.ErrorText = &ErrorText;
  table.Books = &Books;
  table.Entries = &Entries;
  table.ChooseAddresses = &ChooseAddresses;
  if (Does("table nowhere")) return Nowhere<QuillonProviderTable>();
  if (Does("fault in table")) *Nowhere<volatile int>() = 1;
  return Does("no table") ? nullptr : &table;
}

}  // namespace badprovider
