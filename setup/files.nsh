; Putting the files in place: each is written beside the one it replaces, brought to the disk and renamed over it. An
; interruption leaves the old file or the new one, and perhaps a "....new", which the next set-up writes over.

!define ERROR_ALREADY_EXISTS 183

Var OwnsFiles   ; 1: this setup, and no other, writes them

; The copy beside the file, or a sentence.
!macro _Stage NAME
  Push "${NAME}"
  Call Stage
!macroend
!define Stage `!insertmacro _Stage`

!macro _Fail CODE TEXT
  Call RemoveFresh
  SetErrorLevel ${CODE}
  MessageBox MB_OK|MB_ICONSTOP "${TEXT}$\r$\n$\r$\n${TEXT_UNCHANGED}" /SD IDOK
  Abort
!macroend
!define Fail `!insertmacro _Fail`

Function RemoveFresh
  ${If} $OwnsFiles != 1
    Return
  ${EndIf}
  Delete "$INSTDIR\${PROGRAM_FILE}${FRESH}"
  Delete "$INSTDIR\${GUIDE_FILE}${FRESH}"
  Delete "$INSTDIR\${UNINSTALLER}${FRESH}"
  ${If} $Installed == ""
    ; Only if it is empty: it may be a folder of the user's.
    RMDir "$INSTDIR"
  ${EndIf}
FunctionEnd

Function .onInstFailed
  Call RemoveFresh
FunctionEnd

; Copies the named file from $PLUGINSDIR to its place beside the old one.
Function Stage
  Exch $0
  Push $1
  Push $2
  Push $3
  Push $4
  StrCpy $3 "$INSTDIR\$0${FRESH}"
  System::Call 'kernel32::CopyFileW(w "$PLUGINSDIR\$0", w r3, i 0) i .r1 ?e'
  Pop $2
  ${If} $1 != 0
    ; On the disk before it gets its name: a power cut must not leave a name without contents.
    System::Call 'kernel32::CreateFileW(w r3, i 0x40000000, i 7, p 0, i 3, i 0, p 0) p .r4 ?e'
    Pop $2
    StrCpy $1 0
    ${If} $4 P<> -1
      System::Call 'kernel32::FlushFileBuffers(p r4) i .r1 ?e'
      Pop $2
      System::Call 'kernel32::CloseHandle(p r4)'
    ${EndIf}
  ${EndIf}
  ${If} $1 == 0
    Push $2
    Call ErrorText
    Pop $2
    ${Fail} ${CODE_NOT_WRITTEN} "$3 ${TEXT_WRITE_FAILED}$\r$\n$2"
  ${EndIf}
  Push "$PLUGINSDIR\$0"
  Call FileSize
  Pop $1
  Push $3
  Call FileSize
  Pop $2
  ${If} $1 != $2
    ${Fail} ${CODE_NOT_WRITTEN} "$3 ${TEXT_WRITE_FAILED}$\r$\n${TEXT_HALF_WRITTEN}"
  ${EndIf}
  Pop $4
  Pop $3
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

Function FileSize
  Exch $0
  Push $1
  FileOpen $1 $0 r
  StrCpy $0 ""
  FileSeek $1 0 END $0
  FileClose $1
  Pop $1
  Exch $0
FunctionEnd

; Renames the file on the stack over the old one; leaves the system's error, 0 for none.
Function PutInPlace
  Exch $0
  Push $1
  ; MOVEFILE_REPLACE_EXISTING and MOVEFILE_WRITE_THROUGH. What is read-only cannot be replaced.
  SetFileAttributes "$INSTDIR\$0" NORMAL
  System::Call 'kernel32::MoveFileExW(w "$INSTDIR\$0${FRESH}", w "$INSTDIR\$0", i 9) i .r1 ?e'
  Pop $0
  ${If} $1 != 0
    StrCpy $0 0
  ${EndIf}
  Pop $1
  Exch $0
FunctionEnd

Function UseScope
  ${If} $Scope == "all"
    SetShellVarContext all
  ${Else}
    SetShellVarContext current
  ${EndIf}
FunctionEnd

Function UnpackFiles
  InitPluginsDir
  File "/oname=$PLUGINSDIR\${PROGRAM_FILE}" "${PROGRAM}"
  File "/oname=$PLUGINSDIR\${GUIDE_FILE}" "${GUIDE}"
  WriteUninstaller "$PLUGINSDIR\${UNINSTALLER}"
FunctionEnd

; Two at the same time would rename each other's files.
Function TakeFiles
  StrCpy $OwnsFiles 0
  System::Call 'kernel32::CreateMutexW(p 0, i 0, w "Global\Vardeko.Setup") p .r0 ?e'
  Pop $1
  ${If} $0 == 0
  ${OrIf} $1 == ${ERROR_ALREADY_EXISTS}
    ${Fail} ${CODE_RUNNING} "${TEXT_OTHER_SETUP}"
  ${EndIf}
  StrCpy $OwnsFiles 1
FunctionEnd

; Does not come back before the program has ended, or else not at all.
Function EndProgram
  again:
  ${If} ${Silent}
    Call WaitForEnd
  ${Else}
    Call AskToEnd
  ${EndIf}
  ${If} $RunState != ${STATE_GONE}
    Call RunningText
    Pop $0
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$0" /SD IDCANCEL IDRETRY again
    ${Fail} ${CODE_RUNNING} "$0"
  ${EndIf}
FunctionEnd

Function Install
  Call UseScope
  Call TakeFiles
  Call UnpackFiles
  ClearErrors
  CreateDirectory $INSTDIR
  ${IfNot} ${FileExists} "$INSTDIR\*.*"
    ${Fail} ${CODE_NOT_WRITTEN} "${TEXT_FOLDER_FAILED} $INSTDIR"
  ${EndIf}
  ${Stage} "${UNINSTALLER}"
  ${Stage} "${GUIDE_FILE}"
  ${Stage} "${PROGRAM_FILE}"
  replace:
  Call EndProgram
  Push "${PROGRAM_FILE}"
  Call PutInPlace
  Pop $0
  ${If} $0 != 0
    ; Started in between, by its task for instance.
    Call AskToEnd
    ${If} $RunState != ${STATE_GONE}
      Goto replace
    ${EndIf}
    Push $0
    Call ErrorText
    Pop $1
    ${Fail} ${CODE_NOT_WRITTEN} "$INSTDIR\${PROGRAM_FILE} ${TEXT_WRITE_FAILED}$\r$\n$1"
  ${EndIf}
  ; From here on the new version is installed. A guide that is open in another program is replaced next time.
  Push "${UNINSTALLER}"
  Call PutInPlace
  Pop $0
  Push "${GUIDE_FILE}"
  Call PutInPlace
  Pop $0
  Delete "$INSTDIR\${UNINSTALLER}${FRESH}"
  Delete "$INSTDIR\${GUIDE_FILE}${FRESH}"
  Call MakeEntries
FunctionEnd

Function MakeEntries
  CreateShortcut "$SMPROGRAMS\Vardeko.lnk" "$INSTDIR\${PROGRAM_FILE}"
  ${If} $WantsDesktop == 1
    CreateShortcut "$DESKTOP\Vardeko.lnk" "$INSTDIR\${PROGRAM_FILE}"
  ${EndIf}
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayName" "Vardeko"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayVersion" "${SHORT_VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\${PROGRAM_FILE}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\${UNINSTALLER}"'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\${UNINSTALLER}" /S'
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE_KB}
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoRepair" 1
FunctionEnd

; Starts the program file on the stack (second) with these arguments (top) under an administrator's rights and waits
; for its end. Leaves its exit code, or "failed" when its user declined or it could not start.
Function RunWithRights
  Exch $1
  Exch
  Exch $0
  Push $2
  Push $3
  ; SHELLEXECUTEINFOW, asking for the handle of the process.
  System::Call '*(&i4 112, &i4 0x40, p $HWNDPARENT, w "runas", w r0, w r1, p 0, &i4 1, &i4 0, p 0, p 0, p 0, p 0, &i4 0, &i4 0, p 0, p 0) p .r2'
  StrCpy $0 "failed"
  System::Call 'shell32::ShellExecuteExW(p r2) i .r3'
  ${If} $3 != 0
    System::Call '*$2(&i4, &i4, p, p, p, p, p, &i4, &i4, p, p, p, p, &i4, &i4, p, p .r3)'
    System::Call 'kernel32::WaitForSingleObject(p r3, i -1)'
    System::Call 'kernel32::GetExitCodeProcess(p r3, *i .r0)'
    System::Call 'kernel32::CloseHandle(p r3)'
  ${EndIf}
  System::Free $2
  Pop $3
  Pop $2
  Pop $1
  Exch $0
FunctionEnd

; The same setup, silently and with an administrator's rights, puts the files in place; the user's own things stay
; with this one.
Function InstallWithRights
  ; Whether an older version is wanted has been asked here.
  StrCpy $0 "/S /ALLUSERS /OLDER"
  ${If} $WantsDesktop == 1
    StrCpy $0 "$0 /DESKTOP"
  ${EndIf}
  Push $EXEPATH
  Push "$0 /WAIT=60 /D=$INSTDIR"
  Call RunWithRights
  Pop $0
  ${If} $0 == 0
    Return
  ${EndIf}
  ${Select} $0
    ${Case} "failed"
      StrCpy $1 "${TEXT_NO_RIGHTS}"
      StrCpy $0 ${CODE_NO_RIGHTS}
    ${Case} ${CODE_RUNNING}
      StrCpy $1 "${TEXT_ELEVATED_FAILED} ${TEXT_IN_USE}"
    ${CaseElse}
      StrCpy $1 "${TEXT_ELEVATED_FAILED} $INSTDIR ${TEXT_WRITE_FAILED} ($0)"
  ${EndSelect}
  ${Fail} $0 $1
FunctionEnd
