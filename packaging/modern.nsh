; The modern defaults, which go into the section "Server *" of the configuration file.

Var Tls
Var Charset
Var Headers
Var Errors
Var TlsBox
Var CharsetBox
Var HeadersBox
Var ErrorsBox
Var ModernFailed

; $0 holds the command line, $1 what /MODERN= says.
!macro ReadFlag switch flag
  StrCpy ${flag} $1
  ${GetOptions} $0 "/${switch}=" $2
  ${If} $2 != ""
    StrCpy ${flag} $2
  ${EndIf}
  ${If} ${flag} != 0
  ${AndIf} ${flag} != 1
    ${Fail} ${WRONG_SWITCH} "/MODERN= and /${switch}= take 1 or 0, and not ${flag}."
  ${EndIf}
!macroend

Function ReadModern
  ${GetParameters} $0
  ${GetOptions} $0 "/MODERN=" $1
  ${If} $1 == ""
    StrCpy $1 "0"
  ${EndIf}
  !insertmacro ReadFlag TLS $Tls
  !insertmacro ReadFlag CHARSET $Charset
  !insertmacro ReadFlag HEADERS $Headers
  !insertmacro ReadFlag ERRORS $Errors
FunctionEnd

!macro Box row flag box text
  ${NSD_CreateCheckBox} 0 ${row}u 100% 12u "${text}"
  Pop ${box}
  ${If} ${flag} == 1
    ${NSD_Check} ${box}
  ${EndIf}
!macroend

Function ModernPage
  !insertmacro MUI_HEADER_TEXT "Modern defaults" "How should mail go whose script says nothing about it?"
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateLabel} 0 0 100% 26u "Scripts of long ago get what they have always got. These can be had for all servers without changing a script, and later as well: see $\"Configuration$\" in the documents."
  Pop $0
  !insertmacro Box 32 $Tls $TlsBox "&Encrypt when the server offers it"
  !insertmacro Box 48 $Charset $CharsetBox "Send in the &character set that the text needs"
  !insertmacro Box 64 $Headers $HeadersBox "Write messages in today's &form"
  !insertmacro Box 80 $Errors $ErrorsBox "Let error texts end in what the &server said"
  nsDialogs::Show
FunctionEnd

Function ModernPageLeave
  ${NSD_GetState} $TlsBox $Tls
  ${NSD_GetState} $CharsetBox $Charset
  ${NSD_GetState} $HeadersBox $Headers
  ${NSD_GetState} $ErrorsBox $Errors
FunctionEnd

!macro Configure flag key value
  ${If} ${flag} == 1
    nsExec::ExecToStack '"$INSTDIR\quillon.exe" /Configure * ${key} ${value}$9'
    Pop $0
    Pop $1
    ${If} $0 != 0
      StrCpy $ModernFailed $1
    ${EndIf}
  ${EndIf}
!macroend

; What is chosen is written; what is not is left as it was.
Function WriteModern
  StrCpy $9 ""
  ${If} $Scope == "machine"
    StrCpy $9 " /Machine"
  ${EndIf}
  !insertmacro Configure $Tls SMTPSecurity starttls-if-offered
  !insertmacro Configure $Tls POPSecurity starttls-if-offered
  !insertmacro Configure $Charset Charset auto
  !insertmacro Configure $Headers ModernHeaders TRUE
  !insertmacro Configure $Errors DetailedErrors TRUE
  ${If} $ModernFailed != ""
    SetErrorLevel ${SETTINGS_NOT_WRITTEN}
    MessageBox MB_OK|MB_ICONEXCLAMATION "Quillon is installed, but its settings could not be written: $ModernFailed" /SD IDOK
  ${EndIf}
FunctionEnd
