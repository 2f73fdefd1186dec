/*
 * The interface of a provider library: what lets Quillon work with a mail system that it does not
 * know itself. A provider is a 32-bit Windows DLL that exports one function,
 * QuillonProviderGetTable, and is named in Quillon's configuration file. docs/providers.md says
 * how to write, install and debug one; examples/provider is a whole one.
 *
 * The file is C, from C89 on, and C++; nothing else is needed. In other languages write the
 * records down as they are here: members in this order, each at a multiple of its own size.
 *
 * THE RULES
 *
 * Threads   All functions are called on one thread, always the same, and one at a time. A function
 *           may show dialogs and dispatch messages; it is not entered again meanwhile. A function
 *           may call what it is given (the members of QuillonReceiver and the like) only on that
 *           thread, and only until it returns.
 * Memory    Nobody keeps or frees what is the other's. What a function is given is good until the
 *           function returns. What it passes to a callback is copied before the callback returns.
 *           QuillonProviderTable alone stays where it is as long as the library is loaded.
 * Text      UTF-8, as QuillonText: where it begins and how many bytes it has. Text from Quillon
 *           has a zero behind it, and is never a null pointer. Text from a provider needs no zero,
 *           and may be a null pointer when its length is 0, as may a list without items. Bytes
 *           that are no UTF-8 arrive as U+FFFD. A text may be 64 MiB long; line ends are CR LF.
 * Results   0 is success. See "Results" below for the others.
 * Faults    No exception may leave a function. Quillon takes structured exceptions (access
 *           violations, the exceptions of Visual C++ and Delphi) for a failed call, but what was
 *           half done stays so; those of GCC end the process.
 * Records   A record that begins with its size may get members at its end. Whoever makes it puts
 *           its own sizeof there; whoever reads it looks at no member beyond that size, and takes
 *           what is missing for 0. A record without a size never changes. Make a record with
 *           memset(&record, 0, sizeof record), so that members you do not know of are 0.
 */
#ifndef QUILLON_PROVIDER_H
#define QUILLON_PROVIDER_H

#ifdef _WIN32
#define QUILLON_CALL __stdcall
#else
#define QUILLON_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_MSC_VER) || defined(__GNUC__)
#pragma pack(push, 8) /* whatever the program that includes this is compiled with */
#endif

typedef int QuillonInt32; /* 32 bits with every compiler that matters */
typedef unsigned int QuillonUint32;

/* The version of this interface. It changes only when an older provider could not work any more
   with what Quillon has become; records that grow do not change it. */
#define QUILLON_PROVIDER_VERSION 1u

/*
 * Results. The client program sees the automation error 0x80040000 + number.
 */
#define QUILLON_SUCCESS 0
#define QUILLON_CANCELLED 522     /* the user has closed a dialog */
#define QUILLON_NOT_SUPPORTED 530 /* the mail system has no such thing */
#define QUILLON_NEED_LOGIN 544    /* name, password or the like are missing */
/* The provider's own numbers, with the texts of its ErrorText. */
#define QUILLON_FIRST_ERROR 3000
#define QUILLON_LAST_ERROR 3989
/* 3990 to 3999 are Quillon's, about a provider that does not do what is said here. Do not return
   them, nor any other number: clients could not tell what it means. */

/*
 * Records that never change.
 */

typedef struct QuillonText {
  const char* bytes;
  QuillonUint32 length; /* in bytes */
} QuillonText;

/* A sender or recipient. One of the two may be empty. */
typedef struct QuillonParty {
  QuillonInt32 kind; /* QUILLON_TO ...; 0 for a sender */
  QuillonText name;
  QuillonText address; /* as the mail system writes it: without brackets, with a kind if need be */
} QuillonParty;

#define QUILLON_TO 1
#define QUILLON_CC 2
#define QUILLON_BCC 3

/* A file that goes out with a message. */
typedef struct QuillonFile {
  QuillonText path; /* in full */
  QuillonText name; /* what the recipient sees */
} QuillonFile;

/* Local time of the workstation; year 0 when it is not known. */
typedef struct QuillonTime {
  QuillonInt32 year;
  QuillonInt32 month; /* 1 to 12 */
  QuillonInt32 day;
  QuillonInt32 hour;
  QuillonInt32 minute;
  QuillonInt32 second;
} QuillonTime;

/*
 * Records that may grow.
 */

/* What every call has. */
typedef struct QuillonCall {
  QuillonUint32 size;
  QuillonInt32 session; /* as Login gave it; 0 in Login itself */
  void* window;         /* an HWND: the owner of dialogs; null when there is none */
} QuillonCall;

typedef struct QuillonLogin {
  QuillonUint32 size;
  QuillonUint32 flags; /* QUILLON_LOGIN_... */
  QuillonText name;    /* any text may be empty; QUILLON_NEED_LOGIN when it is needed */
  QuillonText password;
  QuillonText postOffice; /* where the mail is: a server or a directory */
  QuillonText profile;
} QuillonLogin;

#define QUILLON_LOGIN_DIALOG 1u   /* ask the user for what is missing */
#define QUILLON_LOGIN_DOWNLOAD 2u /* fetch new mail first */

/* A folder is the names that lead to it, from the outermost on. None: the inbox. */
typedef struct QuillonFolder {
  QuillonUint32 size;
  QuillonUint32 count;
  const QuillonText* names;
} QuillonFolder;

/* A message that is sent, or has been read. */
typedef struct QuillonMessage {
  QuillonUint32 size;
  QuillonUint32 flags; /* QUILLON_MESSAGE_... */
  QuillonText subject;
  QuillonText text;
  QuillonText type;  /* as "IPM.Note"; empty for ordinary mail */
  QuillonParty from; /* when sending, as the client wants it; usually empty, which is the user */
  QuillonParty replyTo;
  QuillonUint32 recipientCount;
  const QuillonParty* recipients;
  QuillonUint32 fileCount; /* when sending; files that are read go through NewFile */
  const QuillonFile* files;
  QuillonTime date;              /* when reading */
  QuillonText dateText;          /* when reading: as the mail system shows it; may be empty */
  QuillonInt32 importance;       /* 1 (highest) to 5, 3 is normal, 0 is not known */
  QuillonInt32 deliveryPriority; /* when sending: 1 to 5 */
  QuillonInt32 sensitivity;      /* when sending: 0 normal, 1 personal, 2 private, 3 confidential */
  QuillonInt32 deliveryReport;   /* when sending: as the client's property of that name has it */
} QuillonMessage;

#define QUILLON_MESSAGE_UNREAD 1u
#define QUILLON_MESSAGE_RECEIPT 2u /* the sender wants to know when it is read */
#define QUILLON_MESSAGE_SIGN 4u    /* when sending */
#define QUILLON_MESSAGE_ENCRYPT 8u
#define QUILLON_MESSAGE_NO_COPYING 16u

/* A message in a list. */
typedef struct QuillonHeader {
  QuillonUint32 size;
  QuillonUint32 flags; /* QUILLON_MESSAGE_UNREAD, QUILLON_MESSAGE_RECEIPT */
  /* By this the message is found again, in any session of the same user, until it is moved or
     deleted. Up to 1000 bytes of any kind; not empty. */
  QuillonText id;
  QuillonText subject;
  QuillonParty from;
  QuillonText to; /* names for the eye, with ", " in between; these two may be empty */
  QuillonText cc;
  QuillonText type;
  QuillonTime date;
  QuillonText dateText;
  QuillonInt32 importance;
  QuillonUint32 bytes; /* how long the message is, 0 when that is not known */
  QuillonUint32 fileCount;
} QuillonHeader;

typedef struct QuillonListing {
  QuillonUint32 size;
  QuillonUint32 flags;         /* QUILLON_LIST_... */
  const QuillonFolder* folder; /* never null */
  QuillonUint32 most;          /* so many are enough; it is not wrong to find more */
  void* context;
  /* To be called once for each message. Any other result than 0 says that it is enough: the
     function returns at once, with whatever result. */
  QuillonInt32(QUILLON_CALL* Found)(void* context, const QuillonHeader* header);
} QuillonListing;

#define QUILLON_LIST_UNREAD 1u  /* unread messages alone */
#define QUILLON_LIST_BY_DATE 2u /* oldest first; else in the order that costs least */

typedef struct QuillonReading {
  QuillonUint32 size;
  QuillonUint32 flags; /* QUILLON_READ_... */
  QuillonText id;      /* of the message */
  void* context;
  /* To be called once, before NewFile. The record's files and fileCount have no meaning here. Any
     other result than 0 ends the reading: the function returns at once, with whatever result. */
  QuillonInt32(QUILLON_CALL* Message)(void* context, const QuillonMessage* message);
  /* To be called for each file of the message, in their order. `name` is the file's name for the
     eye. `path` gets the path of a file that is there and empty, for the provider to write into
     and close; it stays good until the provider's function returns. Any other result than 0 ends
     the reading as above. */
  QuillonInt32(QUILLON_CALL* NewFile)(void* context, const QuillonText* name, QuillonText* path);
} QuillonReading;

#define QUILLON_READ_PEEK 1u     /* the message stays unread, if it is */
#define QUILLON_READ_NO_FILES 2u /* without its files: NewFile is not called */

/* An entry of an address book. The name may be empty when there is an address, and the other way
   round. */
typedef struct QuillonEntry {
  QuillonUint32 size;
  QuillonUint32 flags; /* QUILLON_ENTRY_... */
  QuillonText name;
  QuillonText address; /* as in QuillonParty */
} QuillonEntry;

#define QUILLON_ENTRY_GROUP 1u /* a group of people, or a list */

typedef struct QuillonBooks {
  QuillonUint32 size;
  QuillonUint32 flags; /* 0 */
  void* context;
  /* To be called once for the name of each address book: the one that most users want first. No
     two have the same name, whatever its case. Any other result than 0 ends it as in
     QuillonListing. */
  QuillonInt32(QUILLON_CALL* Found)(void* context, const QuillonText* name);
} QuillonBooks;

/* A part of an address book: books may be long, and are read as they are walked through. */
typedef struct QuillonEntries {
  QuillonUint32 size;
  QuillonUint32 flags; /* 0 */
  QuillonText book;    /* its name, as it was passed */
  QuillonUint32 from;  /* so many entries, from the beginning, are known already: leave them out */
  QuillonUint32 most;  /* so many are enough; it is not wrong to find more */
  void* context;
  /* To be called once for each entry, in the order of the book. Not to be called at all says that
     there are no entries from there on. Any other result than 0 ends it as in QuillonListing. */
  QuillonInt32(QUILLON_CALL* Found)(void* context, const QuillonEntry* entry);
} QuillonEntries;

typedef struct QuillonChoice {
  QuillonUint32 size;
  QuillonUint32 flags; /* 0 */
  QuillonUint32 partyCount;
  const QuillonParty* parties; /* who is chosen at the beginning */
  void* context;
  /* To be called once for each who is chosen in the end, with QUILLON_TO, QUILLON_CC or QUILLON_BCC
     as the kind. Any other result than 0 ends it as in QuillonListing. */
  QuillonInt32(QUILLON_CALL* Chosen)(void* context, const QuillonParty* party);
} QuillonChoice;

/*
 * The functions of a provider. Any but Login may be null: then the operation is answered with
 * QUILLON_NOT_SUPPORTED, or as it says there.
 */
typedef struct QuillonProviderTable {
  QuillonUint32 size;    /* sizeof(QuillonProviderTable) */
  QuillonUint32 version; /* QUILLON_PROVIDER_VERSION */

  /* Begins a session. `session` gets its number: not 0, and none that an open session has. Several
     can be open at once, of different users or of the same. */
  QuillonInt32(QUILLON_CALL* Login)(const QuillonCall* call, const QuillonLogin* login,
                                    QuillonInt32* session);
  /* Ends one that Login has begun. The number is not used again. Null: there is nothing to end. */
  QuillonInt32(QUILLON_CALL* Logout)(const QuillonCall* call);

  /* Success means that the mail system has taken the message for all of its recipients. After a
     failure nobody has got it, if that can be done at all. */
  QuillonInt32(QUILLON_CALL* Send)(const QuillonCall* call, const QuillonMessage* message);

  /* Changes nothing: what is unread stays so. No message at all is success too. */
  QuillonInt32(QUILLON_CALL* List)(const QuillonCall* call, const QuillonListing* listing);
  /* At its end marks the message as read, unless QUILLON_READ_PEEK says otherwise. */
  QuillonInt32(QUILLON_CALL* Read)(const QuillonCall* call, const QuillonReading* reading);
  QuillonInt32(QUILLON_CALL* Delete)(const QuillonCall* call, const QuillonText* id);
  QuillonInt32(QUILLON_CALL* Move)(const QuillonCall* call, const QuillonText* id,
                                   const QuillonFolder* folder);
  QuillonInt32(QUILLON_CALL* UnreadCount)(const QuillonCall* call, const QuillonFolder* folder,
                                          QuillonUint32* count);

  /* The number by which the session of the call is known now, when that may change or the session
     may end by itself; 0 when it has ended. Null: sessions keep their number until Logout. */
  QuillonInt32(QUILLON_CALL* GetSession)(const QuillonCall* call, QuillonInt32* session);
  /* Whether the session of the call, a number that a client brings, is a session of this mail
     system. From then on it is used like one that Login has begun, but never given to Logout:
     whoever has begun it ends it. Null: no number is. */
  QuillonInt32(QUILLON_CALL* SetSession)(const QuillonCall* call);

  /* What a number means, in words for a user; may be called at any time, also before Login and
     about any number. When it is that of the call which has just failed, the text may say what has
     failed. Calls `Text` once, or not at all for a number without a text. */
  void(QUILLON_CALL* ErrorText)(QuillonInt32 number, void* context,
                                void(QUILLON_CALL* Text)(void* context, const QuillonText* text));

  /* The address books, which take both of these. */
  QuillonInt32(QUILLON_CALL* Books)(const QuillonCall* call, const QuillonBooks* books);
  QuillonInt32(QUILLON_CALL* Entries)(const QuillonCall* call, const QuillonEntries* entries);
  /* Lets the user choose in a window of the mail system; QUILLON_CANCELLED when he closes it
     without. Null: there is no such window. */
  QuillonInt32(QUILLON_CALL* ChooseAddresses)(const QuillonCall* call, const QuillonChoice* choice);
} QuillonProviderTable;

/*
 * The exported function. `version` is the QUILLON_PROVIDER_VERSION that Quillon was built with.
 * Returns the table for it, or null when the provider cannot work with it. It is called before all
 * others, maybe more than once, and only to see whether the provider is there: it does not look
 * for the mail system longer than a moment, and shows nothing.
 *
 * The export is looked for as "QuillonProviderGetTable", which takes a .def file with most
 * compilers, and as "QuillonProviderGetTable@4" and "_QuillonProviderGetTable@4", as they name it
 * without one.
 */
const QuillonProviderTable* QUILLON_CALL QuillonProviderGetTable(QuillonUint32 version);

#if defined(_MSC_VER) || defined(__GNUC__)
#pragma pack(pop)
#endif

#ifdef __cplusplus
}
#endif

#endif /* QUILLON_PROVIDER_H */
