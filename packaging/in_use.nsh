; A program that runs, for whatever user, serves clients. It is waited for and never ended.

Var Wait  ; for how many seconds before giving up

!macro InUse un
  ; $0 = 1 while the program runs: the system lets nobody write it then.
  Function ${un}InUse
    StrCpy $0 0
    ${If} ${FileExists} "$INSTDIR\quillon.exe"
      System::Call 'kernel32::CreateFileW(w "$INSTDIR\quillon.exe", i 0x40000000, i 7, p 0, i 3, i 0, p 0) p.r1 ?e'
      Pop $2
      ${If} $1 P<> -1
        System::Call 'kernel32::CloseHandle(p r1)'
      ${ElseIf} $2 = 32  ; ERROR_SHARING_VIOLATION
        StrCpy $0 1
      ${EndIf}
    ${EndIf}
  FunctionEnd

  Function ${un}ReadWait
    ${GetParameters} $0
    ${GetOptions} $0 "/WAIT=" $Wait
    ${If} $Wait == ""
      StrCpy $Wait 5  ; a program that was just left takes two to end
    ${EndIf}
  FunctionEnd

  ; Nothing has been changed yet when this fails.
  Function ${un}WaitUntilUnused
    again:
    IntOp $3 $Wait * 4
    ${Do}
      Call ${un}InUse
      ${If} $0 = 0
        Return
      ${EndIf}
      IntOp $3 $3 - 1
      Sleep 250
    ${LoopUntil} $3 < 0
    SetErrorLevel ${IN_USE}
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Programs are using Quillon.$\n$\nClose the programs and scripts that send or read mail with it, then choose Retry. With Cancel all stays as it is." /SD IDCANCEL IDRETRY again
    Abort "Programs are using Quillon. Nothing was changed."
  FunctionEnd
!macroend
!insertmacro InUse ""
!insertmacro InUse "un."
