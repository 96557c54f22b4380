; Removing: the program, the tasks that start it and the entries; settings and logs when asked. Nothing here knows
; where the backup is, and no folder is removed that holds anything else.
Var RemovesSettings ; 1 or 0
Var HasAsked        ; "yes": an administrator's rights have been asked for
Var OptionsSettings

!macro _UnFail CODE TEXT
  SetErrorLevel ${CODE}
  MessageBox MB_OK|MB_ICONSTOP "${TEXT}" /SD IDOK
  Abort
!macroend
!define UnFail `!insertmacro _UnFail`

Function un.onInit
  SetRegView 64
  Call un.ReadRights
  ${GetParameters} $R0
  StrCpy $WaitSeconds ${DEFAULT_WAIT_SECONDS}
  StrCpy $RemovesSettings 0
  ${TakeSwitch} "/S"
  ${TakeSwitch} "/NCRC"
  ${TakeSwitch} "/SETTINGS"
  ${If} $R1 == "yes"
    StrCpy $RemovesSettings 1
  ${EndIf}
  ${TakeValue} "/WAIT"
  ${If} $R1 != ""
    StrCpy $WaitSeconds $R1
  ${EndIf}
  ${TakeSwitch} "/RIGHTS"
  StrCpy $HasAsked $R1
  ${RefuseRest}
  StrCpy $Scope "user"
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 == $INSTDIR
    StrCpy $Scope "all"
    SetShellVarContext all
    ${If} $IsAdmin == 0
      Call un.StartWithRights
    ${EndIf}
  ${EndIf}
FunctionEnd

; Goes on as another process, whose end is not waited for. It asks only once: where nobody can be given rights, the
; other process has none either.
Function un.StartWithRights
  StrCpy $1 0
  ${If} $HasAsked == "no"
    ${GetParameters} $0
    System::Call 'shell32::ShellExecuteW(p 0, w "runas", w "$INSTDIR\${UNINSTALLER}", w "$0 /RIGHTS", p 0, i 1) p .r1'
  ${EndIf}
  ${If} $1 P<= 32
    ${Refuse} ${CODE_NO_RIGHTS} "${TEXT_UN_NO_RIGHTS}"
  ${EndIf}
  Quit
FunctionEnd

Function un.OptionsPage
  !insertmacro MUI_HEADER_TEXT "${TEXT_UN_TITLE}" "${TEXT_UN_SUBTITLE}"
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateLabel} 0 0 100% 24u "${TEXT_UN}"
  Pop $0
  ${NSD_CreateCheckbox} 0 30u 100% 12u "${TEXT_UN_SETTINGS}"
  Pop $OptionsSettings
  ${If} $RemovesSettings == 1
    ${NSD_Check} $OptionsSettings
  ${EndIf}
  GetDlgItem $0 $HWNDPARENT 1
  SendMessage $0 ${WM_SETTEXT} 0 "STR:${TEXT_UN_BUTTON}"
  nsDialogs::Show
FunctionEnd

Function un.OptionsPageLeave
  ${NSD_GetState} $OptionsSettings $RemovesSettings
FunctionEnd

Function un.Uninstall
  again:
  ${If} ${Silent}
    Call un.WaitForEnd
  ${Else}
    Call un.AskToEnd
  ${EndIf}
  ${If} $RunState != ${STATE_GONE}
    Call un.RunningText
    Pop $0
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$0" /SD IDCANCEL IDRETRY again
    ${UnFail} ${CODE_RUNNING} "$0"
  ${EndIf}
  ; First what decides: as long as the program is there, so are its entries and its uninstaller.
  SetFileAttributes "$INSTDIR\${PROGRAM_FILE}" NORMAL
  System::Call 'kernel32::DeleteFileW(w "$INSTDIR\${PROGRAM_FILE}") i .r0 ?e'
  Pop $1
  ${If} $0 == 0
  ${AndIf} ${FileExists} "$INSTDIR\${PROGRAM_FILE}"
    Push $1
    Call un.ErrorText
    Pop $1
    ${UnFail} ${CODE_NOT_WRITTEN} "$INSTDIR\${PROGRAM_FILE} ${TEXT_UN_FAILED}$\r$\n$1"
  ${EndIf}
  Call un.RemoveTasks
  Delete "$INSTDIR\${GUIDE_FILE}"
  Delete "$INSTDIR\${PROGRAM_FILE}${FRESH}"
  Delete "$INSTDIR\${GUIDE_FILE}${FRESH}"
  Delete "$INSTDIR\${UNINSTALLER}${FRESH}"
  Delete "$SMPROGRAMS\Vardeko.lnk"
  Delete "$DESKTOP\Vardeko.lnk"
  Call un.RemoveUserFiles
  DeleteRegKey SHCTX "${UNINSTALL_KEY}"
  Delete "$INSTDIR\${UNINSTALLER}"
  SetOutPath $TEMP
  RMDir "$INSTDIR"
FunctionEnd

; What the update check has fetched; and the settings and logs, when asked.
Function un.RemoveUserFiles
  SetShellVarContext current
  Delete "$LOCALAPPDATA\Vardeko\VardekoSetup-*.exe"
  Delete "$LOCALAPPDATA\Vardeko\VardekoUpdate.ini"
  RMDir "$LOCALAPPDATA\Vardeko"
  ${If} $RemovesSettings == 1
    DeleteRegKey HKCU "Software\Quentar\Vardeko"
    DeleteRegKey /ifempty HKCU "Software\Quentar"
    SetShellVarContext all
    Delete "$APPDATA\Vardeko\NASConf.ini"
    Delete "$APPDATA\Vardeko\NASConf.Dat"
    Delete "$APPDATA\Vardeko\NASConf.ini.new"
    Delete "$APPDATA\Vardeko\NASConf.Dat.new"
    Delete "$APPDATA\Vardeko\NASSeen.ini"
    Delete "$APPDATA\Vardeko\Error.log"
    RMDir /r "$APPDATA\Vardeko\Log"
    RMDir "$APPDATA\Vardeko"
  ${EndIf}
  ${If} $Scope == "all"
    SetShellVarContext all
  ${Else}
    SetShellVarContext current
  ${EndIf}
FunctionEnd
