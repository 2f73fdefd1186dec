; Files are extracted into ~new, beside what is there. What is there goes to ~old, by renaming; the
; program itself is replaced last, in one step, so that there is one at any moment, and registered.
; Whatever fails before the end is taken back by PutBack, and what a killed installer has left by the
; next one. The configuration is never touched.

Var Extracting   ; 1 from when there is something to take back
Var HadProgram   ; 1: there was one before
Var Placing      ; 1 from when all old files are in ~old
Var Registering  ; 1 from when the new program was put in place

; All names that a version has put beside the program, or may put there.
!macro ForEachName operation
  !insertmacro ${operation} "LICENSE.txt"
  !insertmacro ${operation} "NOTICE.txt"
  !insertmacro ${operation} "README.txt"
  !insertmacro ${operation} "CHANGELOG.md"
  !insertmacro ${operation} "docs"
  !insertmacro ${operation} "sdk"
  !insertmacro ${operation} "samples"
  !insertmacro ${operation} "examples"
  !insertmacro ${operation} "uninstall.exe"
!macroend

!macro RefuseForeign name
  ${If} ${FileExists} "$INSTDIR\${name}"
    ${Fail} ${NOT_THIS_DIRECTORY} "$INSTDIR\${name} is there already and is not Quillon's. Choose another directory."
  ${EndIf}
!macroend

Function CheckDirectory
  ${If} $Installed != ""
  ${AndIf} $Installed != $INSTDIR
    ${Fail} ${NOT_THIS_DIRECTORY} "Quillon is installed in $Installed. Take that out first, or install without another directory."
  ${EndIf}
  ${IfNot} ${FileExists} "$INSTDIR\uninstall.exe"
  ${AndIfNot} ${FileExists} "$INSTDIR\~old\*.*"
    !insertmacro ForEachName RefuseForeign
  ${EndIf}
  ${If} ${FileExists} "$INSTDIR\quillon.exe\*.*"
    ${Fail} ${NOT_THIS_DIRECTORY} "$INSTDIR\quillon.exe is a directory."
  ${EndIf}
FunctionEnd

Function CheckVersion
  ClearErrors
  GetDLLVersion "$INSTDIR\quillon.exe" $0 $1
  ${If} ${Errors}
  ${OrIf} $0 U< ${VERSION_HIGH}
    Return
  ${EndIf}
  ${If} $0 = ${VERSION_HIGH}
  ${AndIf} $1 U<= ${VERSION_LOW}
    Return
  ${EndIf}
  ${GetParameters} $2
  ${GetOptions} $2 "/DOWNGRADE=" $3
  ${If} $3 == 1
    Return
  ${EndIf}
  SetErrorLevel ${NEWER_IS_THERE}
  MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "A newer version is installed. Replace it by ${VERSION}?" /SD IDNO IDYES go_on
  Abort "A newer version is installed, and stays."
  go_on:
  SetErrorLevel 0
FunctionEnd

Function Extract
  StrCpy $HadProgram 0
  ${If} ${FileExists} "$INSTDIR\quillon.exe"
    StrCpy $HadProgram 1
  ${EndIf}
  StrCpy $Extracting 1
  Call PutBackOld
  RMDir /r "$INSTDIR\~done"
  RMDir /r "$INSTDIR\~new"
  ClearErrors
  CreateDirectory "$INSTDIR\~new"
  ${If} ${Errors}
    ${Fail} ${FAILED} "$INSTDIR cannot be written."
  ${EndIf}
  SetErrorLevel ${FAILED}  ; what a failing File ends with
  !insertmacro PayloadExtract
  SetOutPath "$PLUGINSDIR"
  ClearErrors
  WriteUninstaller "$INSTDIR\~new\uninstall.exe"
  ${If} ${Errors}
    ${Fail} ${FAILED} "$INSTDIR cannot be written. Is the disk full?"
  ${EndIf}
  SetErrorLevel 0
FunctionEnd

!macro MoveAway name
  ${If} ${FileExists} "$INSTDIR\${name}"
    ClearErrors
    Rename "$INSTDIR\${name}" "$INSTDIR\~old\${name}"
    ${If} ${Errors}
      ${Fail} ${FAILED} "$INSTDIR\${name} is in use. Close what has it open."
    ${EndIf}
  ${EndIf}
!macroend

!macro MoveIn name
  ${If} ${FileExists} "$INSTDIR\~new\${name}"
    ClearErrors
    Rename "$INSTDIR\~new\${name}" "$INSTDIR\${name}"
    ${If} ${Errors}
      ${Fail} ${FAILED} "$INSTDIR\${name} could not be put in place."
    ${EndIf}
  ${EndIf}
!macroend

; $0 = 0: it could not be done. One file takes the other's name in one step.
!macro ReplaceProgram from
  System::Call 'kernel32::MoveFileExW(w "$INSTDIR\${from}\quillon.exe", w "$INSTDIR\quillon.exe", i 9) i.r0'
!macroend

; $0 = 0: it is registered; $1 is what the program said.
Function Register
  StrCpy $1 "/RegServer"
  ${If} $Scope == "user"
    StrCpy $1 "/RegServerPerUser"
  ${EndIf}
  nsExec::ExecToStack '"$INSTDIR\quillon.exe" $1'
  Pop $0
  Pop $1
FunctionEnd

Function Replace
  CreateDirectory "$INSTDIR\~old"
  Call KeepProgram
  !insertmacro ForEachName MoveAway
  StrCpy $Placing 1
  !insertmacro ForEachName MoveIn
  !insertmacro ReplaceProgram "~new"
  ${If} $0 = 0
    Call WaitUntilUnused  ; a client may have come since
    !insertmacro ReplaceProgram "~new"
    ${If} $0 = 0
      ${Fail} ${FAILED} "$INSTDIR\quillon.exe could not be replaced."
    ${EndIf}
  ${EndIf}
  StrCpy $Registering 1
  Call Register
  ${If} $0 != 0
    ${Fail} ${FAILED} "Quillon could not be registered. $1"
  ${EndIf}
  StrCpy $Extracting 0
  Rename "$INSTDIR\~old" "$INSTDIR\~done"  ; nothing is put back from now on
  RMDir /r "$INSTDIR\~done"
  RMDir /r "$INSTDIR\~new"
FunctionEnd

; A copy, under its name only when it is whole.
Function KeepProgram
  ${If} $HadProgram = 1
    ClearErrors
    CopyFiles /SILENT "$INSTDIR\quillon.exe" "$INSTDIR\~old\quillon.part"
    ${IfNot} ${Errors}
      Rename "$INSTDIR\~old\quillon.part" "$INSTDIR\~old\quillon.exe"
    ${EndIf}
    ${If} ${Errors}
      ${Fail} ${FAILED} "$INSTDIR cannot be written. Is the disk full?"
    ${EndIf}
  ${EndIf}
FunctionEnd

!macro TakeOut name
  RMDir /r "$INSTDIR\${name}"
  Delete "$INSTDIR\${name}"
!macroend

!macro TakeOutPlaced name
  ${IfNot} ${FileExists} "$INSTDIR\~new\${name}"
    !insertmacro TakeOut "${name}"
  ${EndIf}
!macroend

!macro MoveBack name
  ${If} ${FileExists} "$INSTDIR\~old\${name}"
    !insertmacro TakeOut "${name}"
    Rename "$INSTDIR\~old\${name}" "$INSTDIR\${name}"
  ${EndIf}
!macroend

; What lies in ~old, if anything, goes where it was.
Function PutBackOld
  ${If} ${FileExists} "$INSTDIR\~old\*.*"
    !insertmacro ForEachName MoveBack
    ${If} ${FileExists} "$INSTDIR\~old\quillon.exe"
      !insertmacro ReplaceProgram "~old"
    ${EndIf}
    RMDir /r "$INSTDIR\~old"
  ${EndIf}
FunctionEnd

Function PutBack
  ${If} $Extracting != 1
    Return
  ${EndIf}
  SetOutPath "$TEMP"
  ${If} $Placing = 1
    !insertmacro ForEachName TakeOutPlaced
  ${EndIf}
  Call PutBackOld
  ${If} $HadProgram != 1
    Delete "$INSTDIR\quillon.exe"
  ${ElseIf} $Registering = 1
  ${AndIf} $Installed != ""
    Call Register
  ${EndIf}
  RMDir /r "$INSTDIR\~new"
  RMDir "$INSTDIR"
FunctionEnd
