// Five things that programs do with mail, late bound, for Delphi and Lazarus (32 or 64 bit):
//
//   QuillonSamples send SERVER FROM TO SUBJECT TEXT FILE
//   QuillonSamples send_html SERVER FROM TO PICTURE
//   QuillonSamples save_attachments SERVER NAME PASSWORD DIRECTORY
//   QuillonSamples process SERVER NAME PASSWORD DIRECTORY
//   QuillonSamples address_book SYSTEM
//
// For the sixth, with events, import the type library: see README.md.
program QuillonSamples;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$APPTYPE CONSOLE}

uses
  SysUtils, Variants, ActiveX, ComObj;

const
  MailSystemInternet = 10;
  ItemAttachments = 6;
  HeaderSubject = 4;
  HeaderUniqueIdentifier = 22;
  EntryGroup = 1;

function Smtp: OleVariant;
begin
  Result := CreateOleObject('QuillonInterface.Server');
  Result.mailSystem := MailSystemInternet;
  Result.SMTPServer := ParamStr(2);
  Result.NewMessage;
  Result.from := ParamStr(3);
  Result.AddRecipientTo(ParamStr(4));
end;

function Pop: OleVariant;
begin
  Result := CreateOleObject('QuillonInterface.Server');
  Result.mailSystem := MailSystemInternet;
  Result.postOffice := ParamStr(2);
  Result.loginName := ParamStr(3);
  Result.Password := ParamStr(4);
end;

procedure Send;
var
  mail: OleVariant;
begin
  mail := Smtp;
  mail.subject := ParamStr(5);
  mail.Message := ParamStr(6);
  mail.AddAttachment(ParamStr(7));
  mail.Send;
  WriteLn('Sent.');
end;

procedure SendHtml;
var
  mail: OleVariant;
begin
  mail := Smtp;
  mail.Charset := 'auto';
  mail.subject := 'New prices';
  mail.Message := 'Our new prices are in the picture.';
  mail.HTMLMessage := '<h1>Prices in &euro;</h1><p><img src="cid:prices" alt="The list"></p>';
  mail.AddInlineFile(ParamStr(5), 'prices');
  mail.Send;
  WriteLn('Sent.');
end;

procedure SaveAttachments;
var
  mail: OleVariant;
  i, n: Integer;
begin
  mail := Pop;
  mail.AttachmentDirectory := ParamStr(5);
  mail.LoadMessageHeaders;
  for i := 0 to Integer(mail.messageCount) - 1 do
  begin
    mail.messageIndex := i;
    mail.LoadMessage;
    for n := 0 to Integer(mail.GetMessageItemCount(ItemAttachments)) - 1 do
      WriteLn(string(mail.GetMessageItem(ItemAttachments, n)));
  end;
  mail.Logout;
end;

// The server chose the identifier, so it may hold anything.
function FileName(const Identifier: string): string;
var
  i: Integer;
begin
  Result := '';
  for i := 1 to Length(Identifier) do
    Result := Result + IntToHex(Ord(Identifier[i]) and $FF, 2);
end;

// An order is written to a file, and deleted from the mailbox behind that. Whatever fails in between,
// none is lost: at worst it is worked off once more, under the same name.
procedure Process;
var
  mail: OleVariant;
  identifiers: array of string;
  i: Integer;
begin
  mail := Pop;
  mail.LoadMessageIdentifiers;
  SetLength(identifiers, Integer(mail.messageCount));
  for i := 0 to High(identifiers) do
  begin
    mail.messageIndex := i;
    identifiers[i] := mail.GetHeaderItemString(HeaderUniqueIdentifier);
  end;
  mail.LoadMessageHeaders;
  for i := 0 to High(identifiers) do
  begin
    mail.messageIndex := i;
    if Copy(string(mail.GetHeaderItemString(HeaderSubject)), 1, 5) <> 'Order' then
      Continue;
    mail.LoadMessage;
    mail.SaveMessageToFile(IncludeTrailingPathDelimiter(ParamStr(5)) + FileName(identifiers[i]) + '.txt');
    mail.DeleteMessage;
  end;
  mail.Logout; // only this deletes for good
end;

procedure ListAddressBook;
var
  mail, book: OleVariant;
  line: string;
begin
  mail := CreateOleObject('QuillonInterface.Server');
  mail.mailSystem := StrToInt(ParamStr(2));
  book := CreateOleObject('QuillonInterface.AddressBook');
  book.MailObject := mail;
  book.OpenAddressBook;
  while Integer(book.EOF) = 0 do
  begin
    line := string(book.Name) + ' <' + string(book.Address) + '>';
    if Integer(book.EntryType) = EntryGroup then
      line := line + ' (a group)';
    WriteLn(line);
    book.MoveNext;
  end;
  book.CloseAddressBook;
end;

begin
  CoInitialize(nil);
  try
    if ParamStr(1) = 'send' then Send
    else if ParamStr(1) = 'send_html' then SendHtml
    else if ParamStr(1) = 'save_attachments' then SaveAttachments
    else if ParamStr(1) = 'process' then Process
    else if ParamStr(1) = 'address_book' then ListAddressBook
    else WriteLn('send, send_html, save_attachments, process or address_book, and their words');
  except
    on E: EOleException do
    begin
      WriteLn('Error: ', E.Message, ' (', E.ErrorCode and $FFFF, ')');
      ExitCode := 1;
    end;
  end;
end.
