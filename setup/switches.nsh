; The command line and what it may ask for. The same switches preset the page when the setup is not silent.
;   /S  /ALLUSERS  /CURRENTUSER  /TASK=20:00  /WAKE  /DESKTOP  /OLDER  /WAIT=seconds  /D=folder

!define DEFAULT_WAIT_SECONDS 3600

; Takes the switch out of the command line in $R0: "yes" in $R1 when it was there.
!macro _TakeSwitch NAME
  ${WordReplace} " $R0 " " ${NAME} " " " "+" $R1
  ${If} $R1 == " $R0 "
    StrCpy $R1 "no"
  ${Else}
    StrCpy $R0 $R1
    StrCpy $R1 "yes"
  ${EndIf}
!macroend
!define TakeSwitch `!insertmacro _TakeSwitch`

; The same for a switch with a value: $R1 is the value, or empty.
!macro _TakeValue NAME
  ClearErrors
  ${GetOptions} $R0 "${NAME}=" $R1
  ${IfNot} ${Errors}
    ${WordReplace} $R0 "${NAME}=$R1" "" "+1" $R0
  ${EndIf}
!macroend
!define TakeValue `!insertmacro _TakeValue`

; Refuses what is left in $R0: a switch with a typing error must not be left out silently.
!macro _RefuseRest
  ${Trim} $R0 $R0
  ${If} $R0 != ""
    ${Refuse} ${CODE_SWITCHES} "${TEXT_BAD_SWITCH} $R0"
  ${EndIf}
!macroend
!define RefuseRest `!insertmacro _RefuseRest`
!define Trim `!insertmacro _Trim`
!macro _Trim RESULT TEXT
  Push "${TEXT}"
  !ifdef __UNINSTALL__
    Call un.TrimBlanks
  !else
    Call TrimBlanks
  !endif
  Pop ${RESULT}
!macroend

!macro TRIM UN
Function ${UN}TrimBlanks
  Exch $0
  Push $1
  ${Do}
    StrCpy $1 $0 1
    ${If} $1 != " "
      ${Break}
    ${EndIf}
    StrCpy $0 $0 "" 1
  ${Loop}
  ${Do}
    StrCpy $1 $0 1 -1
    ${If} $1 != " "
      ${Break}
    ${EndIf}
    StrCpy $0 $0 -1
  ${Loop}
  Pop $1
  Exch $0
FunctionEnd
!macroend
!insertmacro TRIM ""
!insertmacro TRIM "un."

Function ReadSwitches
  ${GetParameters} $R0
  Call LeaveOutFolder
  StrCpy $Scope ""
  StrCpy $WaitSeconds ${DEFAULT_WAIT_SECONDS}
  ${TakeSwitch} "/S"
  ${TakeSwitch} "/NCRC"
  ${TakeSwitch} "/ALLUSERS"
  ${If} $R1 == "yes"
    StrCpy $Scope "all"
  ${EndIf}
  ${TakeSwitch} "/CURRENTUSER"
  ${If} $R1 == "yes"
    StrCpy $Scope "user"
  ${EndIf}
  StrCpy $TaskWakes 0
  ${TakeSwitch} "/WAKE"
  ${If} $R1 == "yes"
    StrCpy $TaskWakes 1
  ${EndIf}
  StrCpy $WantsDesktop 0
  ${TakeSwitch} "/DESKTOP"
  ${If} $R1 == "yes"
    StrCpy $WantsDesktop 1
  ${EndIf}
  StrCpy $MayBeOlder 0
  ${TakeSwitch} "/OLDER"
  ${If} $R1 == "yes"
    StrCpy $MayBeOlder 1
  ${EndIf}
  ${TakeValue} "/WAIT"
  ${If} $R1 != ""
    StrCpy $WaitSeconds $R1
  ${EndIf}
  ${TakeValue} "/TASK"
  StrCpy $TaskTime $R1
  ${If} $TaskTime != ""
    Push $TaskTime
    Call CheckTime
    Pop $TaskTime
    ${If} $TaskTime == ""
      ${Refuse} ${CODE_SWITCHES} "${TEXT_BAD_TIME}"
    ${EndIf}
  ${EndIf}
  ${RefuseRest}
FunctionEnd

; /D= is NSIS's own switch: always the last one, and without quotes.
Function LeaveOutFolder
  StrCpy $0 0
  ${Do}
    StrCpy $1 $R0 3 $0
    ${If} $1 == "/D="
      StrCpy $R0 $R0 $0
    ${EndIf}
    IntOp $0 $0 + 1
  ${LoopUntil} $1 == ""
FunctionEnd

; What is there already decides where the new version goes; $INSTDIR is empty but for /D.
Function FindInstalled
  StrCpy $Installed ""
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ReadRegStr $1 HKCU "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 != ""
    ${If} $Scope == "user"
      ${Refuse} ${CODE_SWITCHES} "${TEXT_OTHER_SCOPE}"
    ${EndIf}
    StrCpy $Installed $0
    StrCpy $Scope "all"
  ${ElseIf} $1 != ""
  ${AndIf} $Scope != "all"
    StrCpy $Installed $1
    StrCpy $Scope "user"
  ${ElseIf} $Scope == ""
    StrCpy $Scope "all"
  ${EndIf}
  ${If} $Installed != ""
    StrCpy $INSTDIR $Installed
  ${ElseIf} $INSTDIR == ""
    Call DefaultFolder
  ${EndIf}
FunctionEnd

Function DefaultFolder
  ${If} $Scope == "all"
    StrCpy $INSTDIR "$PROGRAMFILES64\Vardeko"
  ${Else}
    StrCpy $INSTDIR "$LOCALAPPDATA\Programs\Vardeko"
  ${EndIf}
FunctionEnd

; The file itself says which version it is: the entry in the registry may be older, after an interrupted set-up.
Function RefuseOlder
  StrCpy $InstalledVersion ""
  ${IfNot} ${FileExists} "$INSTDIR\${PROGRAM_FILE}"
    Return
  ${EndIf}
  ClearErrors
  GetDLLVersion "$INSTDIR\${PROGRAM_FILE}" $0 $1
  ${If} ${Errors}
    Return
  ${EndIf}
  IntOp $2 $0 >> 16
  IntOp $2 $2 & 0xFFFF
  IntOp $3 $0 & 0xFFFF
  IntOp $4 $1 >> 16
  IntOp $4 $4 & 0xFFFF
  IntOp $5 $1 & 0xFFFF
  StrCpy $InstalledVersion "$2.$3"
  ${VersionCompare} "$2.$3.$4.$5" "${FULL_VERSION}" $0
  ${If} $0 == 1
  ${AndIf} $MayBeOlder == 0
    ${If} ${Silent}
      ${Refuse} ${CODE_NEWER} ""
    ${EndIf}
    MessageBox MB_YESNO|MB_ICONEXCLAMATION|MB_DEFBUTTON2 "Vardeko $InstalledVersion ${TEXT_NEWER}" IDYES older
    SetErrorLevel ${CODE_NEWER}
    Quit
    older:
  ${EndIf}
FunctionEnd
