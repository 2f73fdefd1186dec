# Functions for mail: Import-Module .\Quillon.psm1, in Windows PowerShell or PowerShell 7, of 32 or 64
# bit. An error of Quillon ends a function; its code is $_.Exception.InnerException.HResult -band 0xFFFF.

$MailSystemInternet = 10
$ItemAttachments = 6
$HeaderSubject = 4; $HeaderUniqueIdentifier = 22
$EntryGroup = 1

function New-Mail {
    $mail = New-Object -ComObject QuillonInterface.Server
    $mail.mailSystem = $MailSystemInternet
    $mail
}

function Open-Mailbox([string]$Server, [pscredential]$Credential, [int]$Port) {
    $mail = New-Mail
    $mail.postOffice = $Server
    $mail.loginName = $Credential.UserName
    $mail.Password = $Credential.GetNetworkCredential().Password
    if ($Port) { $mail.POPPort = $Port }
    $mail
}

# Without this the server lives until the garbage is collected.
function Close-Mail($Object) {
    [void][Runtime.InteropServices.Marshal]::FinalReleaseComObject($Object)
}

# Send-Mail mail.example.com joe@example.com ann@example.com Report 'It is done.' C:\Mail\report.pdf
function Send-Mail([string]$Server, [string]$From, [string[]]$To, [string]$Subject, [string]$Text,
                   [string[]]$File, [string]$Html, [hashtable]$Picture, [int]$Port) {
    $mail = New-Mail
    try {
        $mail.SMTPServer = $Server
        if ($Port) { $mail.SMTPPort = $Port }
        $mail.Charset = 'auto'
        $mail.NewMessage()
        $mail.from = $From
        foreach ($address in $To) { $mail.AddRecipientTo($address) }
        $mail.subject = $Subject
        $mail.Message = $Text
        foreach ($path in $File) { $mail.AddAttachment((Resolve-Path $path).Path) }
        if ($Html) {
            # -Html '<img src="cid:logo">' -Picture @{ logo = 'C:\Mail\logo.png' }
            $mail.HTMLMessage = $Html
            foreach ($id in $Picture.Keys) { $mail.AddInlineFile((Resolve-Path $Picture[$id]).Path, $id) }
        }
        $mail.Send()
    } finally { Close-Mail $mail }
}

# The paths of the attachments that were saved.
function Save-Attachment([string]$Server, [pscredential]$Credential, [string]$Directory, [int]$Port) {
    $mail = Open-Mailbox $Server $Credential $Port
    try {
        $mail.AttachmentDirectory = (Resolve-Path $Directory).Path
        $mail.LoadMessageHeaders()
        for ($i = 0; $i -lt $mail.messageCount; $i++) {
            $mail.messageIndex = $i
            $mail.LoadMessage()
            foreach ($saved in $mail.MessageItems($ItemAttachments)) { $saved }
        }
        $mail.Logout()
    } finally { Close-Mail $mail }
}

# Writes each order to a file, and deletes it from the mailbox behind that. Whatever fails in between,
# none is lost: at worst it is worked off once more, under the same name.
function Receive-Order([string]$Server, [pscredential]$Credential, [string]$Directory, [int]$Port) {
    $mail = Open-Mailbox $Server $Credential $Port
    try {
        # An identifier names a message for ever, its number only until the next login.
        $mail.LoadMessageIdentifiers()
        $identifiers = @(for ($i = 0; $i -lt $mail.messageCount; $i++) {
            $mail.messageIndex = $i
            $mail.GetHeaderItemString($HeaderUniqueIdentifier)
        })
        $mail.LoadMessageHeaders()
        for ($i = 0; $i -lt $identifiers.Count; $i++) {
            $mail.messageIndex = $i
            if (-not $mail.GetHeaderItemString($HeaderSubject).StartsWith('Order')) { continue }
            $mail.LoadMessage()
            # The server chose the identifier, so it may hold anything.
            $name = -join ([Text.Encoding]::ASCII.GetBytes($identifiers[$i]) | ForEach-Object { $_.ToString('x2') })
            $path = Join-Path (Resolve-Path $Directory).Path "$name.txt"
            $mail.SaveMessageToFile($path)
            $mail.DeleteMessage()
            $path
        }
        $mail.Logout()  # only this deletes for good
    } finally { Close-Mail $mail }
}

# Get-AddressBookEntry 9: Active Messaging
function Get-AddressBookEntry([int]$MailSystem) {
    $mail = New-Object -ComObject QuillonInterface.Server
    $book = New-Object -ComObject QuillonInterface.AddressBook
    try {
        $mail.mailSystem = $MailSystem
        $book.MailObject = $mail
        $book.OpenAddressBook()
        while (-not $book.EOF) {
            [pscustomobject]@{
                Name = $book.Name; Address = $book.Address; Group = $book.EntryType -eq $EntryGroup
            }
            $book.MoveNext()
        }
        $book.CloseAddressBook()
    } finally { Close-Mail $book; Close-Mail $mail }
}

Export-ModuleMember -Function Send-Mail, Save-Attachment, Receive-Order, Get-AddressBookEntry
