// Names as the product writes them.
#pragma once

#include <string>

#include "desk/Store.h"

namespace desk {

// "CN=Ann Archer/O=Desk", and "Ann Archer/Desk".
std::string CanonicalName(const std::string& commonName);
std::string AbbreviatedName(const std::string& commonName);
// "Ann Archer" of that, of "Ann Archer/Desk", and of itself.
std::string CommonName(const std::string& name);

// "ann@desk.example"; another type of address is part of it.
std::string BareAddress(const std::string& address);

bool IsAccount(const std::string& address);

// How a message names somebody: an account by its canonical name, others with the address.
std::string NotesNameOf(const std::string& name, const std::string& address);

// Who is meant by an entry of SendTo: a name in any form, an address, or "Name <address>".
// Throws kNoSuchName, kManyNames.
Recipient RecipientOf(const std::string& text, int recipientClass);

}  // namespace desk
