; For whom it is installed: "user", which takes no rights, or "machine".

Var Scope
Var GivenDirectory  ; that of /D=, if any
Var Installed       ; where this scope has it already, if anywhere
Var UserButton

!macro SettleScope
  ${If} $Scope == "machine"
    SetShellVarContext all
    StrCpy $INSTDIR "$PROGRAMFILES32\Quillon"
  ${Else}
    SetShellVarContext current
    StrCpy $INSTDIR "$LOCALAPPDATA\Programs\Quillon"
  ${EndIf}
  ; What the list has of a copy that somebody deleted does not count.
  ReadRegStr $Installed SHCTX "${UNINSTALL_KEY}" "InstallLocation"
  ${IfNot} ${FileExists} "$Installed\quillon.exe"
    StrCpy $Installed ""
  ${EndIf}
  ${If} $GivenDirectory != ""
    StrCpy $INSTDIR $GivenDirectory
  ${ElseIf} $Installed != ""
    StrCpy $INSTDIR $Installed
  ${EndIf}
!macroend

; $0 = "Admin" with the rights that a machine's installation takes.
!macro Rights
  UserInfo::GetAccountType
  Pop $0
!macroend

; An impossible directory would otherwise be passed over without a word, and the switch is gone from
; $CMDLINE then.
Function ReadDirectory
  StrCpy $GivenDirectory $INSTDIR
  ${If} $INSTDIR == ""
    System::Call 'kernel32::GetCommandLineW() w.r0'
    ClearErrors
    ${GetOptions} $0 "/D=" $1
    ${IfNot} ${Errors}
      ${Fail} ${NOT_THIS_DIRECTORY} "$1 cannot be a directory."
    ${EndIf}
  ${EndIf}
FunctionEnd

Function ReadScope
  ${GetParameters} $1
  ${GetOptions} $1 "/SCOPE=" $Scope
  !insertmacro Rights
  ${If} $Scope == ""
    StrCpy $Scope "user"
    ${If} $0 == "Admin"
      StrCpy $Scope "machine"
    ${EndIf}
  ${ElseIf} $Scope != "user"
  ${AndIf} $Scope != "machine"
    ${Fail} ${WRONG_SWITCH} "/SCOPE= takes user or machine, and not $Scope."
  ${EndIf}
  ${If} $Scope == "machine"
  ${AndIf} $0 != "Admin"
    Call Elevate
  ${EndIf}
  !insertmacro SettleScope
FunctionEnd

; Begins again with more rights, when somebody is there to be asked for them.
Function Elevate
  ${GetParameters} $1
  ClearErrors
  ${GetOptions} $1 "/ELEVATED" $2
  ${IfNot} ${Errors}
  ${OrIf} ${Silent}
    ${Fail} ${NO_RIGHTS} "To install Quillon for all users takes the rights of an administrator. /SCOPE=user takes none."
  ${EndIf}
  ClearErrors
  ExecShell "runas" "$EXEPATH" "/ELEVATED /SCOPE=machine"
  ${If} ${Errors}
    ${Fail} ${NO_RIGHTS} "Quillon can be installed for all users by an administrator only."
  ${EndIf}
  Quit
FunctionEnd

Function ScopePage
  !insertmacro MUI_HEADER_TEXT "For whom" "Who is to use Quillon on this machine?"
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateRadioButton} 0 0 100% 12u "&All users of this machine"
  Pop $1
  ${NSD_CreateLabel} 12u 14u -12u 24u "Also for services and web servers. Takes the rights of an administrator, and asks for them."
  Pop $0
  ${NSD_CreateRadioButton} 0 46u 100% 12u "&Only me"
  Pop $UserButton
  ${NSD_CreateLabel} 12u 60u -12u 24u "Takes no rights. Programs that run as administrator do not see it."
  Pop $0
  ${If} $Scope == "machine"
    ${NSD_Check} $1
  ${Else}
    ${NSD_Check} $UserButton
  ${EndIf}
  nsDialogs::Show
FunctionEnd

Function ScopePageLeave
  StrCpy $Scope "machine"
  ${NSD_GetState} $UserButton $1
  ${If} $1 = ${BST_CHECKED}
    StrCpy $Scope "user"
  ${EndIf}
  !insertmacro Rights
  ${If} $Scope == "machine"
  ${AndIf} $0 != "Admin"
    Call Elevate
  ${EndIf}
  !insertmacro SettleScope
FunctionEnd

Function SkipWhenInstalled
  ${If} $Installed != ""
    Abort
  ${EndIf}
FunctionEnd
