// Six things that programs do with mail, early bound. See the table of tasks at the end.
//
//   cl /EHsc /std:c++20 samples.cpp ole32.lib oleaut32.lib uuid.lib      (quillon.exe beside it)
#include <iostream>
#include <vector>

#include "Listener.h"
#include "Quillon.h"

namespace {

using Arguments = std::vector<std::wstring>;
using Mail = Reference<IServer>;

const std::wstring& At(const Arguments& arguments, std::size_t index) {
  return arguments.at(index);
}

Mail NewMail() {
  Mail mail(L"QuillonInterface.Server");
  Check(mail->put_mailSystem(Value(MailSystemInternet)));
  return mail;
}

// A Server with a new message, sent through the first argument's host; `port` is the argument that
// may hold the port.
Mail Smtp(const Arguments& arguments, std::size_t port) {
  auto mail = NewMail();
  Check(mail->put_SMTPServer(Value(At(arguments, 0))));
  if (arguments.size() > port) Check(mail->put_SMTPPort(Value(At(arguments, port))));
  Check(mail->NewMessage());  // another program may have left one
  Check(mail->put_from(Value(At(arguments, 1))));
  Check(mail->AddRecipientTo(Text(At(arguments, 2))));
  return mail;
}

// A Server that reads the mailbox: SERVER NAME PASSWORD DIRECTORY [PORT].
Mail Pop(const Arguments& arguments) {
  auto mail = NewMail();
  Check(mail->put_postOffice(Value(At(arguments, 0))));
  Check(mail->put_loginName(Value(At(arguments, 1))));
  Check(mail->put_Password(Value(At(arguments, 2))));
  if (arguments.size() > 4) Check(mail->put_POPPort(Value(At(arguments, 4))));
  return mail;
}

long MessageCount(const Mail& mail) {
  Value count;
  Check(mail->get_messageCount(count.Place()));
  return count.Number();
}

std::wstring Header(const Mail& mail, short type) {
  Value text;
  text.Place()->vt = VT_BSTR;
  text.Place()->bstrVal = nullptr;
  Check(mail->GetHeaderItemString(type, &text.Place()->bstrVal));
  return text.String();
}

std::wstring Item(const Mail& mail, long type, long index) {
  Value text;
  Check(mail->GetMessageItem(Value(type), index, text.Place()));
  return text.String();
}

void Send(const Arguments& arguments) {
  const auto mail = Smtp(arguments, 6);
  Check(mail->put_subject(Value(At(arguments, 3))));
  Check(mail->put_Message(Value(At(arguments, 4))));
  Check(mail->AddAttachment(Text(At(arguments, 5))));  // the whole path
  Check(mail->Send());
  std::wcout << L"Sent.\n";
}

void SendHtml(const Arguments& arguments) {
  const auto mail = Smtp(arguments, 4);
  Check(mail->put_Charset(Text(L"auto")));  // the page may hold any character
  Check(mail->put_subject(Value(L"Prices in \u20AC")));
  // Readers without HTML get this text; left empty, it is made from the page.
  Check(mail->put_Message(Value(L"Our new prices are in the picture.")));
  Check(mail->put_HTMLMessage(
      Text(L"<h1>Prices in \u20AC</h1><p><img src=\"cid:prices\" alt=\"The list\"></p>")));
  Check(mail->AddInlineFile(Text(At(arguments, 3)), Text(L"prices")));
  Check(mail->Send());
  std::wcout << L"Sent.\n";
}

void SaveAttachments(const Arguments& arguments) {
  const auto mail = Pop(arguments);
  Check(mail->put_AttachmentDirectory(Text(At(arguments, 3))));
  Check(mail->LoadMessageHeaders());
  for (long index = 0; index < MessageCount(mail); ++index) {
    Check(mail->put_messageIndex(Value(index)));
    Check(mail->LoadMessage());
    Value count;
    Check(mail->GetMessageItemCount(ItemAttachments, count.Place()));
    for (long n = 0; n < count.Number(); ++n) {
      std::wcout << Item(mail, ItemAttachmentNames, n) << L": " << Item(mail, ItemAttachments, n)
                 << L"\n";
    }
  }
  Check(mail->Logout());
}

// A server chooses its identifiers, so they may hold anything.
std::wstring FileName(const std::wstring& identifier) {
  constexpr wchar_t kDigits[] = L"0123456789abcdef";
  std::wstring name;
  for (const wchar_t letter : identifier) {
    name += kDigits[letter / 16 % 16];
    name += kDigits[letter % 16];
  }
  return name + L".txt";
}

// An order is written to a file, and deleted from the mailbox behind that. Whatever fails in
// between, none is lost: at worst it is worked off once more, under the same name.
void Process(const Arguments& arguments) {
  const auto mail = Pop(arguments);
  // An identifier names a message for ever, its number only until the next login.
  Check(mail->LoadMessageIdentifiers());
  std::vector<std::wstring> identifiers;
  for (long index = 0; index < MessageCount(mail); ++index) {
    Check(mail->put_messageIndex(Value(index)));
    identifiers.push_back(Header(mail, HeaderUniqueIdentifier));
  }
  Check(mail->LoadMessageHeaders());
  int done = 0;
  for (std::size_t index = 0; index < identifiers.size(); ++index) {
    Check(mail->put_messageIndex(Value(static_cast<long>(index))));
    if (!Header(mail, HeaderSubject).starts_with(L"Order")) continue;
    Check(mail->LoadMessage());
    Check(mail->SaveMessageToFile(Text(At(arguments, 3) + L"\\" + FileName(identifiers[index]))));
    Check(mail->DeleteMessage());  // the order is safe now
    ++done;
  }
  Check(mail->Logout());  // only this deletes for good: the server does it at the end
  std::wcout << done << L" order(s)\n";
}

void ListAddressBook(const Arguments& arguments) {
  const Mail mail(L"QuillonInterface.Server");
  Check(mail->put_mailSystem(Value(At(arguments, 0))));
  if (arguments.size() > 2) {
    Check(mail->put_loginName(Value(At(arguments, 1))));
    Check(mail->put_Password(Value(At(arguments, 2))));
  }
  const Reference<IAddressBook> book(L"QuillonInterface.AddressBook");
  Check(book->put_MailObject(mail.Get()));
  Value first;
  first.Place()->vt = VT_ERROR;  // left out: the first one
  first.Place()->scode = DISP_E_PARAMNOTFOUND;
  Check(book->OpenAddressBook(first));
  for (short end = 0; SUCCEEDED(book->get_EOF(&end)) && end == 0; Check(book->MoveNext())) {
    Value name;
    Value address;
    short kind = 0;
    name.Place()->vt = address.Place()->vt = VT_BSTR;
    Check(book->get_Name(&name.Place()->bstrVal));
    Check(book->get_Address(&address.Place()->bstrVal));
    Check(book->get_EntryType(&kind));
    std::wcout << name.String() << L" <" << address.String() << L">"
               << (kind == EntryGroup ? L" (a group)" : L"") << L"\n";
  }
  Check(book->CloseAddressBook());
}

// Sends while the program goes on, tells how far it is, and gives up after some seconds.
void Asynchronous(const Arguments& arguments) {
  const auto mail = Smtp(arguments, 5);
  Check(mail->AddAttachment(Text(At(arguments, 3))));
  Listener listener;
  Check(mail->AsynchObjectRegister(&listener, 0, NotifyAll, Value(0L)));
  Check(mail->Send());  // returns at once
  const auto until = GetTickCount64() + std::stoul(At(arguments, 4)) * 1000ULL;
  bool aborted = false;
  while (!listener.Ended()) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) DispatchMessageW(&message);
    if (GetTickCount64() > until && !std::exchange(aborted, true)) Check(mail->AsynchAbort());
  }
  if (listener.Result() == -1) {
    std::wcout << L"Sent.\n";
  } else {
    std::wcout << L"Not sent: " << listener.Why() << L" (" << listener.Result() << L")\n";
  }
  Check(mail->AsynchObjectUnregister(&listener, 0));
}

struct Task {
  const wchar_t* name;
  const wchar_t* usage;
  std::size_t least;
  void (*run)(const Arguments& arguments);
};

constexpr Task kTasks[] = {
    {L"send", L"SERVER FROM TO SUBJECT TEXT FILE [PORT]", 6, Send},
    {L"send_html", L"SERVER FROM TO PICTURE [PORT]", 4, SendHtml},
    {L"save_attachments", L"SERVER NAME PASSWORD DIRECTORY [PORT]", 4, SaveAttachments},
    {L"process", L"SERVER NAME PASSWORD DIRECTORY [PORT]", 4, Process},
    {L"address_book", L"SYSTEM [NAME PASSWORD]", 1, ListAddressBook},
    {L"asynchronous", L"SERVER FROM TO FILE SECONDS [PORT]", 5, Asynchronous},
};

int Run(const Arguments& words) {
  for (const Task& task : kTasks) {
    if (words.empty() || words[0] != task.name || words.size() <= task.least) continue;
    try {
      task.run(Arguments(words.begin() + 1, words.end()));
      return 0;
    } catch (const MailError& error) {
      std::wcout << L"Error: " << error.Description() << L" (" << error.Code() << L")\n";
      return 1;
    }
  }
  for (const Task& task : kTasks)
    std::wcout << L"samples " << task.name << L" " << task.usage << L"\n";
  return 2;
}

}  // namespace

int wmain(int count, wchar_t** words) {
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
  const int status = Run(Arguments(words + 1, words + count));
  CoUninitialize();
  return status;
}
