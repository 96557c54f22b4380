; The setup program. scripts/package.py gives:
;   PROGRAM, GUIDE      the files that are installed
;   ICON                the icon of setup and uninstaller
;   SHORT_VERSION       7.8
;   FULL_VERSION        7.8.0.7800
;   SIZE_KB             what the installed files take
;   OUTPUT              the setup
;   SIGN                a command that signs the file behind it; not defined without a certificate
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
; The dates of the files are no news to anybody, and the setup shall be the same whenever it is made.
SetDateSave off
ManifestDPIAware true
ManifestSupportedOS Win10
; Started without special rights, it asks for them when it gets to the program's folder: everything that belongs to
; the user (the evening task, the start at the end) is done as that user.
RequestExecutionLevel user
CRCCheck force

!include "MUI2.nsh"
!include "LogicLib.nsh"
!include "FileFunc.nsh"
!include "WordFunc.nsh"
!include "nsDialogs.nsh"
!include "WinMessages.nsh"
!include "texts.nsh"

Name "Vardeko"
Caption "Setup von Vardeko ${SHORT_VERSION}"
BrandingText " "
OutFile "${OUTPUT}"
AutoCloseWindow true
ShowInstDetails nevershow
ShowUninstDetails nevershow
!ifdef SIGN
  !uninstfinalize '${SIGN} "%1"'
!endif

VIProductVersion "${FULL_VERSION}"
VIAddVersionKey /LANG=1031 "ProductName" "Vardeko"
VIAddVersionKey /LANG=1031 "FileDescription" "Vardeko Setup"
VIAddVersionKey /LANG=1031 "LegalCopyright" ""
VIAddVersionKey /LANG=1031 "FileVersion" "${FULL_VERSION}"
VIAddVersionKey /LANG=1031 "ProductVersion" "${SHORT_VERSION}"

!define PROGRAM_FILE "Vardeko.exe"
!define GUIDE_FILE "Anleitung.html"
!define UNINSTALLER "Entfernen.exe"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Vardeko"
; Beside a file, the one that is going to take its place.
!define FRESH ".new"

; What setup and uninstaller end with; docs/anleitung.md explains them.
!define CODE_CANCELLED 1
!define CODE_FAILED 2
!define CODE_RUNNING 3
!define CODE_NEWER 4
!define CODE_NO_RIGHTS 5
!define CODE_NOT_WRITTEN 6
!define CODE_SWITCHES 7
!define CODE_NO_TASK 8

Var Scope           ; "all" or "user"
Var IsAdmin         ; 1 with an administrator's rights
Var Installed       ; the folder of an installed version; empty when there is none
Var InstalledVersion
Var MayBeOlder      ; 1: a newer version may be replaced without asking
Var WaitSeconds     ; for how long a silent setup waits for the program to end
Var TaskTime        ; hh:mm; empty for no task
Var TaskWakes       ; 1 or 0
Var WantsDesktop    ; 1 or 0

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_CUSTOMFUNCTION_ABORT Cancelled
!define MUI_CUSTOMFUNCTION_UNABORT un.Cancelled

!include "common.nsh"
!include "running.nsh"
!include "switches.nsh"
!include "task.nsh"
!include "files.nsh"
!include "wizard.nsh"
!include "uninstall.nsh"

Page custom OptionsPage OptionsPageLeave
!define MUI_PAGE_CUSTOMFUNCTION_PRE DirectoryPage
!define MUI_PAGE_CUSTOMFUNCTION_SHOW DirectoryPageShow
!define MUI_DIRECTORYPAGE_TEXT_TOP "${TEXT_DIRECTORY}"
!insertmacro MUI_PAGE_DIRECTORY
Page custom RunningPage
!insertmacro MUI_PAGE_INSTFILES
Page custom FinishPage FinishPageLeave

UninstPage custom un.OptionsPage un.OptionsPageLeave
UninstPage custom un.RunningPage
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "German"

Function .onInit
  SetRegView 64
  Call ReadRights
  Call ReadSwitches
  Call FindInstalled
  Call RefuseOlder
  ${If} $Scope == "all"
  ${AndIf} $IsAdmin == 0
  ${AndIf} ${Silent}
    ${Refuse} ${CODE_NO_RIGHTS} "${TEXT_NO_RIGHTS}"
  ${EndIf}
FunctionEnd

Section
  ; The folder's size is looked at by the page that asks for the folder.
  AddSize ${SIZE_KB}
  ${If} $Scope == "all"
  ${AndIf} $IsAdmin == 0
    Call InstallWithRights
  ${Else}
    Call Install
  ${EndIf}
  ${If} $TaskTime != ""
    Call MakeTask
  ${EndIf}
SectionEnd

Section "Uninstall"
  SetAutoClose false
  Call un.Uninstall
SectionEnd
