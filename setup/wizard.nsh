; The pages of the setup.
Var OptionsForAll
Var OptionsForUser
Var OptionsTask
Var OptionsTime
Var OptionsWake
Var OptionsDesktop
Var FinishStart

Function OptionsPage
  !insertmacro MUI_HEADER_TEXT "${TEXT_OPTIONS_TITLE}" "${TEXT_OPTIONS_SUBTITLE}"
  nsDialogs::Create 1018
  Pop $0
  ${If} $Installed == ""
    ${NSD_CreateFirstRadioButton} 0 0 100% 11u "${TEXT_FOR_ALL}"
    Pop $OptionsForAll
    ${NSD_CreateAdditionalRadioButton} 0 13u 100% 11u "${TEXT_FOR_USER}"
    Pop $OptionsForUser
    ${If} $Scope == "all"
      ${NSD_Check} $OptionsForAll
    ${Else}
      ${NSD_Check} $OptionsForUser
    ${EndIf}
  ${Else}
    ${NSD_CreateLabel} 0 0 100% 26u "Vardeko $InstalledVersion ${TEXT_REPLACES}"
    Pop $0
  ${EndIf}
  ${NSD_CreateCheckbox} 0 40u 140u 12u "${TEXT_TASK}"
  Pop $OptionsTask
  ${NSD_OnClick} $OptionsTask OptionsTaskClick
  StrCpy $0 "20:00"
  ${If} $TaskTime != ""
    StrCpy $0 $TaskTime
    ${NSD_Check} $OptionsTask
  ${EndIf}
  ${NSD_CreateText} 142u 39u 28u 13u $0
  Pop $OptionsTime
  ${NSD_SetTextLimit} $OptionsTime 5
  ${NSD_CreateLabel} 174u 42u 30u 10u "${TEXT_CLOCK}"
  Pop $0
  ${NSD_CreateLabel} 12u 54u 95% 10u "${TEXT_TASK_HOW}"
  Pop $0
  ${NSD_CreateCheckbox} 12u 66u 95% 12u "${TEXT_WAKE}"
  Pop $OptionsWake
  ${If} $TaskWakes == 1
    ${NSD_Check} $OptionsWake
  ${EndIf}
  ${NSD_CreateCheckbox} 0 88u 100% 12u "${TEXT_DESKTOP}"
  Pop $OptionsDesktop
  ${If} $WantsDesktop == 1
    ${NSD_Check} $OptionsDesktop
  ${EndIf}
  Call OptionsTaskClick
  ${If} $Installed != ""
    Call NameNextButton
  ${EndIf}
  nsDialogs::Show
FunctionEnd

Function OptionsTaskClick
  ${NSD_GetState} $OptionsTask $R0
  EnableWindow $OptionsTime $R0
  EnableWindow $OptionsWake $R0
FunctionEnd

; The page before the one that installs, whatever comes in between.
Function NameNextButton
  GetDlgItem $0 $HWNDPARENT 1
  SendMessage $0 ${WM_SETTEXT} 0 "STR:${TEXT_INSTALL}"
FunctionEnd

Function OptionsPageLeave
  ${NSD_GetState} $OptionsTask $0
  ${NSD_GetState} $OptionsWake $TaskWakes
  ${NSD_GetState} $OptionsDesktop $WantsDesktop
  StrCpy $TaskTime ""
  ${If} $0 == 1
    ${NSD_GetText} $OptionsTime $TaskTime
    Push $TaskTime
    Call CheckTime
    Pop $TaskTime
    ${If} $TaskTime == ""
      MessageBox MB_OK|MB_ICONEXCLAMATION "${TEXT_BAD_TIME}"
      Abort
    ${EndIf}
  ${EndIf}
  ${If} $Installed != ""
    Return
  ${EndIf}
  ${NSD_GetState} $OptionsForAll $0
  StrCpy $1 "user"
  ${If} $0 == 1
    StrCpy $1 "all"
  ${EndIf}
  ${If} $1 != $Scope
    StrCpy $Scope $1
    Call DefaultFolder
  ${EndIf}
FunctionEnd

; A version that is there is replaced where it is.
Function DirectoryPage
  ${If} $Installed != ""
    Abort
  ${EndIf}
FunctionEnd

Function DirectoryPageShow
  Call NameNextButton
FunctionEnd

Function FinishPage
  !insertmacro MUI_HEADER_TEXT "${TEXT_FINISH_TITLE}" ""
  nsDialogs::Create 1018
  Pop $0
  ${NSD_CreateLabel} 0 0 100% 24u "${TEXT_FINISH}"
  Pop $0
  ${NSD_CreateCheckbox} 0 30u 100% 12u "${TEXT_START}"
  Pop $FinishStart
  GetDlgItem $0 $HWNDPARENT 1
  SendMessage $0 ${WM_SETTEXT} 0 "STR:${TEXT_FINISH_BUTTON}"
  GetDlgItem $0 $HWNDPARENT 2
  ShowWindow $0 ${SW_HIDE}
  GetDlgItem $0 $HWNDPARENT 3
  ShowWindow $0 ${SW_HIDE}
  nsDialogs::Show
FunctionEnd

Function FinishPageLeave
  ${NSD_GetState} $FinishStart $0
  ${If} $0 == 1
    ; Its folder is not this setup's, which the next update wants to write over.
    SetOutPath $INSTDIR
    Exec '"$INSTDIR\${PROGRAM_FILE}"'
  ${EndIf}
FunctionEnd
