; The installer. tools/package.py calls makensis with
;   VERSION, VERSION_HIGH, VERSION_LOW   the version, and the two numbers of its version record
;   PRODUCT_VERSION                      the version with the commit
;   PAYLOAD, PAYLOAD_KB                  the directory with the files, their size together
;   PAYLOAD_LIST                         what puts each of them there and takes it away
;   OUTPUT                               the file to make
; docs/installing.md tells the switches and exit codes.

Unicode true
ManifestDPIAware true
ManifestSupportedOS all
RequestExecutionLevel user  ; a machine's installation asks for more, see scope.nsh
SetCompressor lzma
SetOverwrite on
AllowSkipFiles off
ShowInstDetails nevershow
ShowUninstDetails nevershow

Name "Quillon"
OutFile "${OUTPUT}"
BrandingText "Quillon ${VERSION}"
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Quillon"
VIAddVersionKey "CompanyName" "Quillon"
VIAddVersionKey "FileDescription" "Quillon set-up"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${PRODUCT_VERSION}"
VIAddVersionKey "LegalCopyright" "Apache License 2.0"

!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh
!include nsDialogs.nsh
!include "${PAYLOAD_LIST}"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Quillon"

; Exit codes; 0 is success, 1 the user's Cancel.
!define FAILED 2
!define IN_USE 3
!define NO_RIGHTS 4
!define NEWER_IS_THERE 5
!define NOT_THIS_DIRECTORY 6
!define SETTINGS_NOT_WRITTEN 7
!define WRONG_SWITCH 8

; Says why, and ends the installation: .onInstFailed then puts back what was changed.
!macro Fail code text
  SetErrorLevel ${code}
  MessageBox MB_OK|MB_ICONSTOP "${text}" /SD IDOK
  Abort "${text}"
!macroend
!define Fail "!insertmacro Fail"

!include in_use.nsh
!include scope.nsh
!include modern.nsh
!include replace.nsh
!include uninstall.nsh

!define MUI_ICON "..\src\automation\quillon.ico"
!define MUI_UNICON "..\src\automation\quillon.ico"
!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_LICENSE "${PAYLOAD}/LICENSE.txt"
Page custom ScopePage ScopePageLeave
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipWhenInstalled
!insertmacro MUI_PAGE_DIRECTORY
Page custom ModernPage ModernPageLeave
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Function .onInit
  Call ReadDirectory
  Call ReadScope
  Call ReadWait
  Call ReadModern
FunctionEnd

Section
  Call CheckDirectory
  Call CheckVersion
  Call WaitUntilUnused
  Call Extract
  Call Replace
  Call Record
  Call WriteModern
SectionEnd

Function .onInstFailed
  Call PutBack
FunctionEnd

; What the system's list and the Start menu show.
Function Record
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayName" "Quillon"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "Publisher" "Quillon"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\quillon.exe"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "EstimatedSize" ${PAYLOAD_KB}
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoRepair" 1
  SetOutPath "$INSTDIR"  ; where the shortcuts begin
  CreateDirectory "$SMPROGRAMS\Quillon"
  CreateShortcut "$SMPROGRAMS\Quillon\Quillon documents.lnk" "$INSTDIR\docs\index.html"
  ${If} ${FileExists} "$INSTDIR\samples\*.*"
    CreateShortcut "$SMPROGRAMS\Quillon\Quillon samples.lnk" "$INSTDIR\samples"
  ${EndIf}
  SetOutPath "$PLUGINSDIR"
FunctionEnd
