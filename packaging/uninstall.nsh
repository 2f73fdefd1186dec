; Takes out what was installed, and the configuration only when that is asked for.

Var Purge

Function un.onInit
  StrCpy $Scope "user"
  SetShellVarContext current
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 == $INSTDIR
    StrCpy $Scope "machine"
    SetShellVarContext all
    Call un.NeedRights
  ${EndIf}
  Call un.ReadWait
  ${GetParameters} $0
  ${GetOptions} $0 "/PURGE=" $Purge
FunctionEnd

; Begins again with more rights, when somebody is there to be asked for them.
Function un.NeedRights
  !insertmacro Rights
  ${If} $0 == "Admin"
    Return
  ${EndIf}
  ${GetParameters} $1
  ClearErrors
  ${GetOptions} $1 "/ELEVATED" $2
  ${IfNot} ${Errors}
  ${OrIf} ${Silent}
    ${Fail} ${NO_RIGHTS} "Quillon was installed for all users: only an administrator can take it out."
  ${EndIf}
  ExecShell "runas" "$INSTDIR\uninstall.exe" "/ELEVATED"
  Quit
FunctionEnd

; $0 = 0: it is done; $1 is what the program said.
!macro ChangeRegistration switch
  StrCpy $1 "/${switch}"
  ${If} $Scope == "user"
    StrCpy $1 "/${switch}PerUser"
  ${EndIf}
  nsExec::ExecToStack '"$INSTDIR\quillon.exe" $1'
  Pop $0
  Pop $1
!macroend

Section "un.Quillon"
  Call un.WaitUntilUnused
  ${If} $Purge != 1
    MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "Remove your settings, passwords and the protocol log of Quillon as well?" /SD IDNO IDNO keep
    StrCpy $Purge 1
    keep:
  ${EndIf}
  ${If} ${FileExists} "$INSTDIR\quillon.exe"
    Call un.TakeOutProgram
  ${EndIf}
  !insertmacro PayloadDelete
  Delete "$INSTDIR\uninstall.exe"
  RMDir /r "$INSTDIR\~old"
  RMDir /r "$INSTDIR\~new"
  RMDir /r "$INSTDIR\~done"
  Delete "$SMPROGRAMS\Quillon\Quillon documents.lnk"
  Delete "$SMPROGRAMS\Quillon\Quillon samples.lnk"
  RMDir "$SMPROGRAMS\Quillon"
  DeleteRegKey SHCTX "${UNINSTALL_KEY}"
  ${If} $Purge == 1
    Call un.TakeOutConfiguration
  ${EndIf}
  RMDir "$INSTDIR"
SectionEnd

; Not registered any more, it cannot be started; who has come meanwhile is served as before.
Function un.TakeOutProgram
  !insertmacro ChangeRegistration UnregServer
  ${If} $0 != 0
    ${Fail} ${FAILED} "Quillon could not be taken out of the registry, and stays. $1"
  ${EndIf}
  ClearErrors
  Delete "$INSTDIR\quillon.exe"
  ${If} ${Errors}
    !insertmacro ChangeRegistration RegServer
    ${Fail} ${IN_USE} "Programs are using Quillon: it stays."
  ${EndIf}
FunctionEnd

Function un.TakeOutConfiguration
  Delete "$INSTDIR\quillon.ini"
  Delete "$INSTDIR\POPDUMP.TXT"
  SetShellVarContext current
  Delete "$APPDATA\Quillon\quillon.ini"
  Delete "$APPDATA\Quillon\POPDUMP.TXT"
  RMDir /r "$APPDATA\Quillon\Fetched"
  RMDir "$APPDATA\Quillon"
FunctionEnd
