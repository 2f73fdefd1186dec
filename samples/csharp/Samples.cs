// Six things that programs do with mail, late bound: no assembly to be made first, any .NET, 32 or 64
// bit. See the table of tasks in Main.
//
//   csc Samples.cs      or in a project:  <TargetFramework>net8.0-windows</TargetFramework>
using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;

// Has the one method that the server calls, by its name and with references. Short: the sending waits.
[ComVisible(true)]
[ClassInterface(ClassInterfaceType.AutoDispatch)]
public class Listener
{
    public readonly ManualResetEvent Ended = new ManualResetEvent(false);
    public int Result;  // -1: sent
    public string Why = "";

    public int AsynchNotification(ref object operation, ref object kind, ref object done, ref object total,
                                  ref object message, ref object result, ref object reserved, ref object text)
    {
        const int status = 1, end = 2, progress = 3, send = 1;
        if ((int)kind == status) Console.WriteLine(text);
        if ((int)kind == progress && (int)total > 0) Console.WriteLine("{0} of {1} bytes", done, total);
        if ((int)kind == end && (int)operation == send)
        {
            Result = (int)result;
            Why = (string)text;
            Ended.Set();
        }
        return 0;
    }
}

public static class Samples
{
    const int MailSystemInternet = 10;
    const short ItemAttachments = 6, HeaderSubject = 4, HeaderUniqueIdentifier = 22, EntryGroup = 1;

    static dynamic Create(string progId)
    {
        return Activator.CreateInstance(Type.GetTypeFromProgID(progId, true));
    }

    static dynamic Smtp(string[] words, int port)
    {
        dynamic mail = Create("QuillonInterface.Server");
        mail.mailSystem = MailSystemInternet;
        mail.SMTPServer = words[0];
        if (words.Length > port) mail.SMTPPort = int.Parse(words[port]);
        mail.NewMessage();
        mail.@from = words[1];
        mail.AddRecipientTo(words[2]);
        return mail;
    }

    static dynamic Pop(string[] words)
    {
        dynamic mail = Create("QuillonInterface.Server");
        mail.mailSystem = MailSystemInternet;
        mail.postOffice = words[0];
        mail.loginName = words[1];
        mail.Password = words[2];
        if (words.Length > 4) mail.POPPort = int.Parse(words[4]);
        return mail;
    }

    static void Send(string[] words)
    {
        dynamic mail = Smtp(words, 6);
        mail.subject = words[3];
        mail.Message = words[4];
        mail.AddAttachment(words[5]);
        mail.Send();
        Console.WriteLine("Sent.");
    }

    static void SendHtml(string[] words)
    {
        dynamic mail = Smtp(words, 4);
        mail.Charset = "auto";
        mail.subject = "Prices in \u20ac";
        mail.Message = "Our new prices are in the picture.";
        mail.HTMLMessage = "<h1>Prices in \u20ac</h1><p><img src='cid:prices' alt='The list'></p>";
        mail.AddInlineFile(words[3], "prices");
        mail.Send();
        Console.WriteLine("Sent.");
    }

    static void SaveAttachments(string[] words)
    {
        dynamic mail = Pop(words);
        mail.AttachmentDirectory = words[3];
        mail.LoadMessageHeaders();
        for (int i = 0; i < mail.messageCount; ++i)
        {
            mail.messageIndex = i;
            mail.LoadMessage();
            foreach (string file in mail.MessageItems(ItemAttachments)) Console.WriteLine(file);
        }
        mail.Logout();
    }

    // An order is written to a file, and deleted from the mailbox behind that. Whatever fails in
    // between, none is lost: at worst it is worked off once more, under the same name.
    static void Process(string[] words)
    {
        dynamic mail = Pop(words);
        var identifiers = new List<string>();
        mail.LoadMessageIdentifiers();
        for (int i = 0; i < mail.messageCount; ++i)
        {
            mail.messageIndex = i;
            identifiers.Add(mail.GetHeaderItemString(HeaderUniqueIdentifier));
        }
        mail.LoadMessageHeaders();
        int done = 0;
        for (int i = 0; i < identifiers.Count; ++i)
        {
            mail.messageIndex = i;
            string subject = mail.GetHeaderItemString(HeaderSubject);
            if (!subject.StartsWith("Order", StringComparison.Ordinal)) continue;
            mail.LoadMessage();
            // The server chose the identifier, so it may hold anything.
            string name = BitConverter.ToString(Encoding.ASCII.GetBytes(identifiers[i])).Replace("-", "");
            mail.SaveMessageToFile(Path.Combine(words[3], name + ".txt"));
            mail.DeleteMessage();
            ++done;
        }
        mail.Logout();  // only this deletes for good
        Console.WriteLine("{0} order(s)", done);
    }

    static void ListAddressBook(string[] words)
    {
        dynamic mail = Create("QuillonInterface.Server");
        mail.mailSystem = int.Parse(words[0]);
        if (words.Length > 2)
        {
            mail.loginName = words[1];
            mail.Password = words[2];
        }
        dynamic book = Create("QuillonInterface.AddressBook");
        book.MailObject = mail;
        book.OpenAddressBook();
        while (book.EOF == 0)
        {
            Console.WriteLine("{0} <{1}>{2}", book.Name, book.Address,
                              book.EntryType == EntryGroup ? " (a group)" : "");
            book.MoveNext();
        }
        book.CloseAddressBook();
    }

    static void Asynchronous(string[] words)
    {
        dynamic mail = Smtp(words, 5);
        mail.AddAttachment(words[3]);
        var listener = new Listener();
        mail.AsynchObjectRegister(listener, 0, 1, 0);
        mail.Send();  // returns at once
        if (!listener.Ended.WaitOne(TimeSpan.FromSeconds(double.Parse(words[4])))) mail.AsynchAbort();
        listener.Ended.WaitOne();
        Console.WriteLine(listener.Result == -1 ? "Sent." : "Not sent: " + listener.Why);
        mail.AsynchObjectUnregister(listener, 0);
    }

    // Calls of the server come in on threads of the system, so that Main can wait.
    [MTAThread]
    public static int Main(string[] words)
    {
        var tasks = new Dictionary<string, Action<string[]>> {
            { "send", Send }, { "send_html", SendHtml }, { "save_attachments", SaveAttachments },
            { "process", Process }, { "address_book", ListAddressBook }, { "asynchronous", Asynchronous },
        };
        if (words.Length < 2 || !tasks.ContainsKey(words[0]))
        {
            Console.WriteLine("one of " + string.Join(", ", tasks.Keys) + ", with the words of the C++ sample");
            return 2;
        }
        try
        {
            tasks[words[0]](words.Skip(1).ToArray());
            return 0;
        }
        catch (COMException error)
        {
            Console.WriteLine("Error: {0} ({1})", error.Message, error.ErrorCode & 0xFFFF);
            return 1;
        }
    }
}
